// SPDX-License-Identifier: MIT
// Which font a text asks for: a file, or a set of files NAME-SIZE.cbf that are installed, of which
// the one whose size fits best is taken.
#pragma once

#include "place.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace overlay {

// The set of texts for which nothing else is named.
constexpr const char *kUsualFontSet = "sans";

class FontChoice {
  public:
    FontChoice() = default; // of no font

    // A name with a slash or .cbf at its end is that of a file; any other is that of a set, or of a
    // file when there is no such set. Files count from the folder. Throws FileFailure when there is
    // neither.
    FontChoice(const std::string &name, const std::filesystem::path &folder,
               const std::optional<Place> &wantedSize);

    explicit operator bool() const {
        return files != nullptr;
    }

    // Whether it may be another font in frames of another height.
    bool FollowsFrames() const {
        return size.share > 0;
    }

    // Of the file that fits frames of a height.
    const std::string &PathFor(int32_t frameHeight) const;

  private:
    struct SizedFile {
        int32_t size;
        std::string path;
    };
    using Files = std::vector<SizedFile>; // by size, and at least one
    static Files FilesOfSet(const std::string &name, const std::filesystem::path &folder);

    std::shared_ptr<const Files> files;
    Place size;
};

} // namespace overlay
