// SPDX-License-Identifier: MIT
// A signal may come while a read or a write waits without end, so that its handler does all that is
// left to do: unlink() and raise() may be called there.
#include "target_file.h"

#include "common/failure.h"
#include "common/output_file.h"

#include <csignal>
#include <cstdio>

#include <unistd.h>

namespace {

constexpr int kEndingSignals[] = {SIGHUP, SIGINT, SIGTERM};

const char *removedBySignal = nullptr; // null: nothing
volatile std::sig_atomic_t endsFilm = 0;
volatile std::sig_atomic_t stopRequested = 0;

void HandleSignal(int number) {
    std::signal(number, SIG_DFL);
    if (endsFilm) {
        stopRequested = 1;
        return;
    }
    if (removedBySignal)
        unlink(removedBySignal);
    std::raise(number);
}

// Without SA_RESTART, a read that waits ends and lets the program see the request. What is ignored
// (under nohup, say) stays ignored.
void Handle(void (*handler)(int)) {
    for (const int number : kEndingSignals) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
            continue;
        action.sa_handler = handler;
        action.sa_flags = 0;
        sigaction(number, &action, nullptr);
    }
}

} // namespace

TargetFile::TargetFile(std::string path, bool keepPartial)
    : target(std::move(path)),
      temporary(target.empty() ? "" : target + ".tmp" + std::to_string(getpid())),
      keeps(keepPartial) {
    if (!target.empty())
        tool::CheckTarget(target);
    removedBySignal = temporary.empty() ? nullptr : temporary.c_str();
    endsFilm = keeps;
    Handle(HandleSignal);
}

// Also after the file has been renamed, when there is nothing left to remove.
TargetFile::~TargetFile() {
    Handle(SIG_DFL);
    removedBySignal = nullptr;
    if (!temporary.empty())
        unlink(temporary.c_str());
}

void TargetFile::Publish() {
    if (!target.empty() && std::rename(temporary.c_str(), target.c_str()) != 0)
        throw tool::SystemFailure(target);
}

bool StopRequested() {
    return stopRequested != 0;
}
