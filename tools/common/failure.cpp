// SPDX-License-Identifier: MIT
#include "common/failure.h"

#include <cerrno>
#include <cstring>

namespace tool {

Failure SystemFailure(const std::string &subject) {
    const int reason = errno; // which building the text may change
    return Failure(kBadData, subject + ": " + std::strerror(reason));
}

} // namespace tool
