// SPDX-License-Identifier: MIT
// Once who wrote has closed a FIFO, another may open it, so its end is no end.
#include "control_pipe.h"

#include "options.h"
#include "report.h"

#include "common/failure.h"

#include <cerrno>

#include <fcntl.h>
#include <poll.h>

namespace {

constexpr size_t kMaxLine = 65536;
constexpr char kTooLong[] = "the line has more than 65536 bytes";
constexpr size_t kMaxTold = 1000;
constexpr size_t kMaxBytes = 1 << 20; // for one frame

int Open(const std::string &path) {
    return path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                       : open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

bool HasBytes(int descriptor) {
    pollfd waiting = {descriptor, POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

} // namespace

ControlPipe::ControlPipe(const std::string &path)
    : name(path == "-" ? "standard input" : path), file(Open(path)), splitter(kMaxLine) {
    if (file.number < 0)
        throw tool::SystemFailure(name);
}

void ControlPipe::Apply(overlay::Engine &engine) {
    const auto take = [&](std::string_view line, size_t number, bool isTooLong) {
        Tell(isTooLong ? overlay::Errors{{name, number, kTooLong}}
                       : engine.Control(line, name, number));
    };
    char bytes[65536];
    for (size_t taken = 0; taken < kMaxBytes && HasBytes(file.number);) {
        const ssize_t count = read(file.number, bytes, sizeof bytes);
        if (count < 0 && errno != EINTR && errno != EAGAIN)
            throw tool::SystemFailure(name);
        if (count == 0) // who wrote is gone, and says no more of the last line
            splitter.End(take);
        if (count <= 0)
            return;
        splitter.Feed({bytes, static_cast<size_t>(count)}, take);
        taken += static_cast<size_t>(count);
    }
}

// Not without end: what comes may be no control lines at all.
void ControlPipe::Tell(const overlay::Errors &errors) {
    if (errors.empty() || told > kMaxTold)
        return;
    NoErrors(errors);
    if (++told > kMaxTold)
        NoErrors({{name, 0, "too many wrong lines: no others are told"}});
}
