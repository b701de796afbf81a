// SPDX-License-Identifier: MIT
#include "common/output_file.h"

#include "common/failure.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <unistd.h>

namespace tool {

void CheckTarget(const std::string &path) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw Failure(kBadUsage, path + ": is not a regular file");
}

OutputFile::OutputFile(std::string targetPath)
    : target(std::move(targetPath)), temporary(target + ".tmp" + std::to_string(getpid())) {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGHUP, SIGINT, SIGTERM})
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, &signalsBefore);
}

// Also after the file has been renamed, when there is nothing left to remove.
OutputFile::~OutputFile() {
    unlink(temporary.c_str());
    sigprocmask(SIG_SETMASK, &signalsBefore, nullptr);
}

void OutputFile::Write(const void *bytes, size_t size) {
    std::FILE *file = std::fopen(temporary.c_str(), "wbx");
    if (!file)
        throw SystemFailure(target);
    const bool written = std::fwrite(bytes, 1, size, file) == size;
    const int writeError = errno;
    const bool closed = std::fclose(file) == 0;
    if (written && closed)
        return;
    if (!written)
        errno = writeError;
    throw SystemFailure(target);
}

void OutputFile::Publish() {
    if (std::rename(temporary.c_str(), target.c_str()) != 0)
        throw SystemFailure(target);
}

} // namespace tool
