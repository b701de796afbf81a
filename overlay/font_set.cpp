// SPDX-License-Identifier: MIT
// Sets lie in the folders for data that the desktops' XDG Base Directories name, the user's before
// the system's, and in the one that this build is installed to. The first folder that has a
// file of the set has all that counts.
#include "font_set.h"

#include "resources.h"
#include "words.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <system_error>
#include <tuple>

namespace overlay {

namespace {

namespace fs = std::filesystem;

constexpr int64_t kUsualSize = 24;
constexpr std::string_view kEnding = ".cbf";
constexpr size_t kMaxSizeDigits = 5;

std::string Variable(const char *name, const std::string &unset) {
    const char *value = std::getenv(name);
    return value && *value ? value : unset;
}

// Relative folders would be others in every working directory.
void AddFolder(const std::string &data, std::vector<fs::path> &folders) {
    const fs::path folder = fs::path(data) / "orn-min-render" / "fonts";
    if (folder.is_absolute() && std::find(folders.begin(), folders.end(), folder) == folders.end())
        folders.push_back(folder);
}

std::vector<fs::path> FontFolders() {
    std::vector<fs::path> folders;
    AddFolder(Variable("XDG_DATA_HOME", Variable("HOME", "") + "/.local/share"), folders);
    const std::string system = Variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    for (size_t start = 0; start < system.size();) {
        const size_t end = std::min(system.find(':', start), system.size());
        AddFolder(system.substr(start, end - start), folders);
        start = end + 1;
    }
    AddFolder(ORN_OVERLAY_DATA_FOLDER, folders);
    return folders;
}

// The size in "NAME-SIZE.cbf"; none for other files.
std::optional<int32_t> SizeOf(std::string_view file, const std::string &name) {
    const std::string start = name + "-";
    if (file.size() < start.size() + kEnding.size() || file.substr(0, start.size()) != start ||
        file.substr(file.size() - kEnding.size()) != kEnding)
        return std::nullopt;
    const std::string_view digits =
        file.substr(start.size(), file.size() - start.size() - kEnding.size());
    if (digits.empty() || digits.size() > kMaxSizeDigits ||
        !std::all_of(digits.begin(), digits.end(), IsDigit))
        return std::nullopt;
    return ParseNumber<int32_t>(digits, "int32");
}

bool IsPath(const std::string &name) {
    return name.find('/') != std::string::npos ||
           (name.size() >= kEnding.size() &&
            name.compare(name.size() - kEnding.size(), kEnding.size(), kEnding) == 0);
}

[[noreturn]] void RefuseName(const std::string &name) {
    std::string folders;
    for (const fs::path &folder : FontFolders())
        folders += (folders.empty() ? "" : ", ") + folder.string();
    throw FileFailure(
        name, "no such file, and no set of fonts: there is no " + name + "-SIZE.cbf in " + folders +
                  " (the package orn-min-render-fonts has the set " + kUsualFontSet + ")");
}

} // namespace

FontChoice::Files FontChoice::FilesOfSet(const std::string &name, const fs::path &folder) {
    Files found;
    std::error_code ended;
    for (fs::directory_iterator file(folder, ended), end; !ended && file != end;
         file.increment(ended)) {
        const std::optional<int32_t> size = SizeOf(file->path().filename().string(), name);
        if (size)
            found.push_back({*size, file->path().string()});
    }
    std::sort(found.begin(), found.end(), [](const SizedFile &a, const SizedFile &b) {
        return std::tie(a.size, a.path) < std::tie(b.size, b.path);
    });
    return found;
}

FontChoice::FontChoice(const std::string &name, const fs::path &folder,
                       const std::optional<Place> &wantedSize) {
    if (wantedSize)
        size = *wantedSize;
    else
        size.offset = kUsualSize;
    Files found;
    const std::vector<fs::path> folders = IsPath(name) ? std::vector<fs::path>() : FontFolders();
    for (auto at = folders.begin(); found.empty() && at != folders.end(); ++at)
        found = FilesOfSet(name, *at);
    const bool isSet = !found.empty();
    const std::string path = (folder / name).string();
    std::error_code ignored;
    if (!isSet && !IsPath(name) && !fs::exists(path, ignored))
        RefuseName(name);
    if (!isSet && wantedSize)
        throw FileFailure(path, "is one font, and has its own size: only sets take another");
    if (!isSet)
        found.push_back({0, path});
    files = std::make_shared<const Files>(std::move(found));
}

// In hundredths of a pixel, so that what a percentage makes is exact enough for two sizes to be
// equally near: the smaller one is taken then.
const std::string &FontChoice::PathFor(int32_t frameHeight) const {
    const double wanted =
        std::round((size.share * frameHeight + static_cast<double>(size.offset)) * 100);
    const auto distance = [wanted](const SizedFile &file) {
        return std::abs(100.0 * file.size - wanted);
    };
    return std::min_element(files->begin(), files->end(),
                            [&distance](const SizedFile &a, const SizedFile &b) {
                                return distance(a) < distance(b);
                            })
        ->path;
}

} // namespace overlay
