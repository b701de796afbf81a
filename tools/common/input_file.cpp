// SPDX-License-Identifier: MIT
#include "common/input_file.h"

#include "common/descriptor.h"
#include "common/failure.h"
#include "common/streams.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>

namespace tool {

namespace {

// Bytes that a regular file has now; none for pipes and the like.
std::optional<uint64_t> KnownBytes(const Descriptor &file) {
    struct stat status = {};
    if (fstat(file.number, &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    return static_cast<uint64_t>(status.st_size);
}

Failure TooLarge(const std::string &path, uint64_t maxBytes) {
    return Failure(kBadData, path + ": has more than " + std::to_string(maxBytes) + " bytes");
}

// Room for what the file is known to have, then twice as much each time. One byte more than that is
// asked for, since only a read that comes up short tells the end.
template <typename Content> Content ReadWhole(const std::string &path, uint64_t maxBytes) {
    constexpr uint64_t kLeastPart = 65536;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.number < 0)
        throw SystemFailure(path);
    const std::optional<uint64_t> known = KnownBytes(file);
    const uint64_t limit = known ? maxBytes : std::min(maxBytes, kMaxStreamBytes);
    if (known > limit)
        throw TooLarge(path, limit);
    Content content;
    size_t done = 0;
    for (uint64_t room = known.value_or(0) + 1;; room = std::max(2 * room, kLeastPart)) {
        content.resize(static_cast<size_t>(std::min(room, limit + 1)));
        done += ReadFully(file.number, content.data() + done, content.size() - done);
        if (errno)
            throw SystemFailure(path);
        if (done > limit)
            throw TooLarge(path, limit);
        if (done < content.size())
            break;
    }
    content.resize(done);
    return content;
}

} // namespace

std::string ReadText(const std::string &path, uint64_t maxBytes) {
    return ReadWhole<std::string>(path, maxBytes);
}

std::vector<uint8_t> ReadData(const std::string &path, uint64_t maxBytes) {
    return ReadWhole<std::vector<uint8_t>>(path, maxBytes);
}

} // namespace tool
