// SPDX-License-Identifier: MIT
// Whether a file has been written or replaced.
#pragma once

#include <sys/stat.h>

namespace overlay {

// From its status then and now.
inline bool HasChanged(const struct stat &then, const struct stat &now) {
    return then.st_dev != now.st_dev || then.st_ino != now.st_ino || then.st_size != now.st_size ||
           then.st_mtim.tv_sec != now.st_mtim.tv_sec || then.st_mtim.tv_nsec != now.st_mtim.tv_nsec;
}

} // namespace overlay
