// SPDX-License-Identifier: MIT
// Mapped and not read: then the time and memory of a check go with what the font uses of its file.
#include "cbfdump/mapped_file.h"

#include "common/descriptor.h"
#include "common/failure.h"
#include "common/streams.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace cbfdump {

static void EndForCutFile(int) {
    tool::Say("cbfdump", "the font file was cut short while it was read");
    _exit(tool::kBadData);
}

static size_t RegularFileSize(const tool::Descriptor &file, const std::string &path) {
    struct stat status = {};
    if (file.number < 0 || fstat(file.number, &status) != 0)
        throw tool::SystemFailure(path);
    if (!S_ISREG(status.st_mode))
        throw tool::Failure(tool::kBadData, path + ": is not a regular file");
    return static_cast<size_t>(status.st_size);
}

MappedFile::MappedFile(const std::string &path) {
    // A pipe that nobody writes is not waited for.
    const tool::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    size = RegularFileSize(file, path);
    if (size == 0)
        return;
    std::signal(SIGBUS, EndForCutFile);
    void *memory = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.number, 0);
    if (memory == MAP_FAILED)
        throw tool::SystemFailure(path);
    first = static_cast<const uint8_t *>(memory);
}

MappedFile::~MappedFile() {
    if (first)
        munmap(const_cast<uint8_t *>(first), size);
}

} // namespace cbfdump
