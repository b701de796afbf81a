// SPDX-License-Identifier: MIT
#include "watched_files.h"

#include <utility>

namespace {

// All zero for a file that isn't there.
struct stat StatusOf(const std::string &path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        status = {};
    return status;
}

bool IsSame(const struct stat &one, const struct stat &other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino &&
           one.st_size == other.st_size && one.st_mtim.tv_sec == other.st_mtim.tv_sec &&
           one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
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
        changed = changed || !IsSame(status, file.seen);
        file.seen = status;
    }
    return changed;
}
