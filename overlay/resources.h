// SPDX-License-Identifier: MIT
// What a script names by file: fonts, bitmaps and pictures. Nothing else here reads files.
#pragma once

#include "frame_memory.h"
#include "messages.h"
#include "pbm.h"
#include "place.h"
#include "still.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace overlay {

// What is wrong with a file.
struct FileFailure : Failure {
    FileFailure(const std::string &name, const std::string &what)
        : Failure(name + ": " + what), path(name), reason(what) {
    }
    std::string path;
    std::string reason;
};

using Font = std::shared_ptr<OrnMinRenderFont>;

// Fonts, each file once for each direction in use, since turning a font empties its glyph cache.
class FontStore {
  public:
    // Throws FileFailure.
    Font Get(const std::string &path, int32_t direction);

  private:
    std::map<std::pair<std::string, int32_t>, Font> fonts;
};

// Throws FileFailure.
Bitmap LoadBitmap(const std::string &path);

// Whether a name is that of a PNG or JPEG file, and not of raw frames.
bool IsStill(const std::string &path);

// A PNG or JPEG file, scaled to sizes that may follow the frames' height.
class StillFile {
  public:
    // A side without a size follows from the other one. Reads nothing yet.
    StillFile(std::string path, const Place &width, const Place &height, PictureDecoder decoder);

    // Makes the picture for frames of a height, unless it is made for these already. Throws
    // FileFailure, also when there is no decoder; there is no picture then.
    void ScaleFor(int32_t frameHeight);

    // Null unless it could be made.
    Still *Scaled() {
        return still ? &*still : nullptr;
    }

  private:
    std::string path;
    Place width;
    Place height;
    PictureDecoder decode;
    std::optional<Still> still;
    int32_t madeFor = 0; // height of frames
};

// A file of raw frames, without padding, shown from the first one over and over.
class Picture {
  public:
    // Of the frames in the file. Opens nothing yet.
    Picture(std::string path, int32_t width, int32_t height);

    // Looks at the file: it holds frames with or without chroma. Throws FileFailure unless they
    // are whole ones, and one at least; FrameAt then gives nothing.
    void Open(bool hasChroma);

    // Frame index modulo their number, until the next call; null unless the file is open. Throws
    // FileFailure when it can't be read any more.
    const OrnMinRenderImage *FrameAt(int64_t index);

  private:
    using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

    void Read(int64_t index);

    std::string path;
    FrameShape shape;
    File file;
    int64_t count = 0;
    std::optional<FrameMemory> frame; // there as long as the file is open
    OrnMinRenderImage image{};
    int64_t shown = -1; // the frame in memory; -1: none
    int64_t next = 0;   // the frame at which the file stands; -1: not known
};

// What a script's files need to be found and understood.
struct ScriptFiles {
    std::filesystem::path folder;       // from which their names count
    std::optional<bool> hasChroma;      // whether pictures have it, where that is known already
    PictureDecoder decodePicture;       // of PNG and JPEG; may be none
    std::optional<int32_t> frameHeight; // for which these are scaled, where that is known already
};

} // namespace overlay
