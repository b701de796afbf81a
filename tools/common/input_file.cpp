// SPDX-License-Identifier: MIT
// Read by descriptor, so that pipes that don't block and interrupted calls are waited for as
// everywhere.
#include "common/input_file.h"

#include "common/descriptor.h"
#include "common/failure.h"
#include "common/streams.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace tool {

// Bytes that a regular file has now; 0 for pipes and the like, whose size shows only while they are
// read.
static uint64_t KnownBytes(const Descriptor &file) {
    struct stat status = {};
    const bool known = fstat(file.number, &status) == 0 && S_ISREG(status.st_mode);
    return known ? static_cast<uint64_t>(status.st_size) : 0;
}

// Room for what the file is known to have, then twice as much each time. One byte more than that is
// asked for, since only a read that comes up short tells the end.
std::string ReadText(const std::string &path, uint64_t maxBytes) {
    constexpr uint64_t kLeastPart = 65536;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.number < 0)
        throw SystemFailure(path);
    std::string text;
    size_t done = 0;
    for (uint64_t room = KnownBytes(file) + 1; done == text.size() && done <= maxBytes;
         room = std::max(2 * room, kLeastPart)) {
        text.resize(static_cast<size_t>(std::min(room, maxBytes + 1)));
        done += ReadFully(file.number, text.data() + done, text.size() - done);
        if (errno)
            throw SystemFailure(path);
    }
    if (done > maxBytes)
        throw Failure(kBadData, path + ": has more than " + std::to_string(maxBytes) + " bytes");
    text.resize(done);
    return text;
}

} // namespace tool
