// SPDX-License-Identifier: MIT
#include "track_files.h"

#include "common/failure.h"
#include "common/input_file.h"
#include "common/numbers.h"

#include <algorithm>
#include <filesystem>

namespace {

// The digits at the end of a name.
std::optional<int64_t> NumberOf(const std::filesystem::path &path) {
    const std::string stem = path.stem().string();
    const size_t last = stem.find_last_not_of("0123456789");
    return tool::ParseInteger(stem.substr(last == std::string::npos ? 0 : last + 1));
}

} // namespace

std::vector<overlay::TrackFile> ReadTrackFiles(const std::string &path) {
    if (path == "-")
        return {{tool::ReadText("/dev/stdin"), "standard input"}};
    std::error_code error;
    if (!std::filesystem::is_directory(path, error))
        return {{tool::ReadText(path), path}};
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::directory_iterator entry(path, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().extension() == ".txt" && NumberOf(entry->path()))
            paths.push_back(entry->path());
    if (error)
        throw tool::Failure(tool::kBadData, path + ": " + error.message());
    if (paths.empty())
        throw tool::Failure(tool::kBadData,
                            path + ": has no files whose names end in a number and .txt");
    std::sort(paths.begin(), paths.end());
    std::vector<overlay::TrackFile> files;
    for (const std::filesystem::path &file : paths)
        files.push_back({tool::ReadText(file.string()), file.string(), NumberOf(file)});
    return files;
}
