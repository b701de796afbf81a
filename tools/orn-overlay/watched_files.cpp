// SPDX-License-Identifier: MIT
#include "watched_files.h"

#include "overlay/file_change.h"

#include <utility>

namespace {

// All zero for a file that isn't there.
struct stat StatusOf(const std::string &path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        status = {};
    return status;
}

} // namespace

void WatchedFiles::Set(std::vector<std::string> paths) {
    files.clear();
    for (std::string &path : paths) {
        const struct stat status = StatusOf(path);
        files.push_back({std::move(path), status});
    }
}

bool WatchedFiles::HaveChanged() {
    bool changed = false;
    for (File &file : files) {
        const struct stat status = StatusOf(file.path);
        changed = changed || overlay::HasChanged(file.seen, status);
        file.seen = status;
    }
    return changed;
}
