// SPDX-License-Identifier: MIT
// The reason of a system call is asked for before anything else can change it.
#include "common/failure.h"

#include <cerrno>
#include <cstring>

namespace tool {

Failure SystemFailure(const std::string &subject) {
    const int reason = errno; // which building the text may change
    return Failure(kBadData, (subject.empty() ? "''" : subject) + ": " + std::strerror(reason));
}

} // namespace tool
