// SPDX-License-Identifier: MIT
#include "common/output_file.h"

#include "common/descriptor.h"
#include "common/failure.h"
#include "common/streams.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>

namespace tool {

namespace fs = std::filesystem;

// Of what the path leads to, if that exists.
static std::optional<struct stat> StatusOf(const std::string &path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return {};
    return status;
}

static bool IsSameFile(const struct stat &one, const struct stat &other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Whether it is where standard output goes, /dev/stdout for example.
static bool IsStandardOutput(const struct stat &status) {
    struct stat output = {};
    return fstat(STDOUT_FILENO, &output) == 0 && IsSameFile(output, status);
}

// The path that the last of the links names, which need not exist.
static std::string FollowLinks(const std::string &path) {
    constexpr int kMaxLinks = 40; // as the system
    fs::path followed = path;
    std::error_code isNone;
    for (int i = 0; i < kMaxLinks; ++i) {
        const fs::path next = fs::read_symlink(followed, isNone);
        if (isNone)
            return followed.string();
        followed = followed.parent_path() / next;
    }
    errno = ELOOP;
    throw SystemFailure(path);
}

// What is to be replaced; empty where the bytes are written to what is there.
static std::string TargetOf(const std::string &path) {
    const std::optional<struct stat> status = StatusOf(path);
    if (status && (!S_ISREG(status->st_mode) || IsStandardOutput(*status)))
        return {};
    return FollowLinks(path);
}

// Its length doesn't depend on the target's name, which may be as long as names can be.
static std::string TemporaryName(const std::string &target) {
    const fs::path folder =
        target.empty() ? fs::temp_directory_path() : fs::path(target).parent_path();
    return (folder / ".orn-XXXXXX").string();
}

static sigset_t EndingSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        sigaddset(&ending, number);
    return ending;
}

// A terminal may be both read and written.
void CheckTarget(const std::string &path, const std::vector<std::string> &inputs) {
    if (path.empty())
        throw Failure(kBadUsage, "the file to write has no name");
    const std::optional<struct stat> status = StatusOf(path);
    if (status && S_ISDIR(status->st_mode))
        throw Failure(kBadUsage, path + ": is a directory");
    if (!status || !S_ISREG(status->st_mode))
        return;
    for (const std::string &input : inputs)
        if (const auto read = StatusOf(input); read && IsSameFile(*status, *read))
            throw Failure(kBadUsage, path + ": is read, and would be overwritten");
}

OutputFile::OutputFile(const std::string &path)
    : name(path), target(TargetOf(path)), temporary(TemporaryName(target)) {
    const sigset_t ending = EndingSignals();
    sigprocmask(SIG_BLOCK, &ending, &signalsBefore);
    descriptor = mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor >= 0)
        return;
    const int reason = errno;
    sigprocmask(SIG_SETMASK, &signalsBefore, nullptr);
    errno = reason;
    throw SystemFailure(name);
}

OutputFile::~OutputFile() {
    Remove();
    close(descriptor);
}

void OutputFile::Remove() {
    if (!temporary.empty())
        unlink(temporary.c_str());
    temporary.clear();
    sigprocmask(SIG_SETMASK, &signalsBefore, nullptr);
}

void OutputFile::Write(const void *bytes, size_t size) {
    if (!WriteFully(descriptor, bytes, size))
        throw SystemFailure(name);
}

// To give a file to its old owner takes rights that one may not have; then it is one's own.
void OutputFile::KeepOwnerAndMode() const {
    const mode_t mask = umask(0);
    umask(mask);
    mode_t mode = 0666 & ~mask;
    if (const std::optional<struct stat> old = StatusOf(target)) {
        mode = old->st_mode & 07777;
        if (fchown(descriptor, old->st_uid, old->st_gid) != 0)
            mode &= 0777;
    }
    if (fchmod(descriptor, mode) != 0)
        throw SystemFailure(name);
}

// Of what the path leads to, for writing.
static int OpenDirectly(const std::string &path) {
    if (const auto status = StatusOf(path); status && IsStandardOutput(*status))
        return fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    return open(path.c_str(), O_WRONLY | O_CLOEXEC);
}

// A pipe may have no reader yet. Nothing is left to remove by then, so signals may end the wait.
void OutputFile::CopyToTarget() {
    Remove();
    const Descriptor output(OpenDirectly(name));
    if (output.number < 0 || lseek(descriptor, 0, SEEK_SET) != 0)
        throw SystemFailure(name);
    char part[65536];
    size_t count = sizeof part;
    while (count == sizeof part) {
        count = ReadFully(descriptor, part, sizeof part);
        if (errno || !WriteFully(output.number, part, count))
            throw SystemFailure(name);
    }
}

void OutputFile::ReplaceTarget() {
    KeepOwnerAndMode();
    if (fsync(descriptor) != 0 || rename(temporary.c_str(), target.c_str()) != 0)
        throw SystemFailure(name);
    temporary.clear();
}

void OutputFile::Publish() {
    if (target.empty())
        CopyToTarget();
    else
        ReplaceTarget();
}

} // namespace tool
