// SPDX-License-Identifier: MIT
// A signal may come while a read or a write waits without end, so that its handler does all that is
// left to do: unlink() and raise() may be called there.
#include "target_file.h"

#include "signals.h"

#include <csignal>
#include <filesystem>

#include <unistd.h>

namespace {

constexpr int kEndingSignals[] = {SIGHUP, SIGINT, SIGTERM};

const char *removedBySignal = nullptr; // null: nothing
volatile std::sig_atomic_t endsFilm = 0;

void HandleSignal(int number) {
    std::signal(number, SIG_DFL);
    if (endsFilm) {
        RequestStop();
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

std::unique_ptr<tool::OutputFile> MakeFile(const std::string &path) {
    std::error_code isNone;
    const auto status = std::filesystem::status(path, isNone);
    if (path.empty() ||
        (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)))
        return nullptr;
    auto file = std::make_unique<tool::OutputFile>(path);
    removedBySignal = file->TemporaryPath().c_str();
    return file;
}

} // namespace

TargetFile::TargetFile(const std::string &path, bool keepPartial)
    : target(path), keeps(keepPartial) {
    // The file holds signals back; here they are handled, since a read or a write may never end.
    sigset_t before;
    sigprocmask(SIG_BLOCK, nullptr, &before);
    file = MakeFile(path);
    endsFilm = keeps;
    Handle(HandleSignal);
    sigprocmask(SIG_SETMASK, &before, nullptr);
}

TargetFile::~TargetFile() {
    Handle(SIG_DFL);
    removedBySignal = nullptr;
}

void TargetFile::Publish() {
    if (file)
        file->Publish();
}
