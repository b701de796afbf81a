// SPDX-License-Identifier: MIT
// Reading ends where enough boxes wait, so that memory is bounded, but never before the frame that
// waits for them has all of its own.
#include "live_tracks.h"

#include "options.h"
#include "report.h"
#include "signals.h"

#include "common/failure.h"
#include "common/streams.h"

#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>

namespace {

constexpr size_t kMaxWaiting = 100000;         // boxes
constexpr size_t kMaxTold = 20;                // lines that are wrong
constexpr std::chrono::milliseconds kLook{50}; // for a request to stop

// A FIFO that nobody has opened for writing yet is waited for later.
int Open(const std::string &path) {
    return path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                       : open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

} // namespace

bool AreLive(const std::string &path) {
    struct stat status = {};
    const int result = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
    return result == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

LiveTracks::LiveTracks(const Settings &all)
    : name(all.path == "-" ? "standard input" : all.path), latest(all.latest), file(Open(all.path)),
      stop(eventfd(0, EFD_CLOEXEC)), stream(all.tracks, all.names, name, all.shape) {
    if (file.number < 0)
        throw tool::SystemFailure(name);
    if (stop.number < 0)
        throw tool::SystemFailure("eventfd");
    if (latest)
        stream.AllowAnyOrder();
    thread = std::thread([this] { Run(); });
}

LiveTracks::~LiveTracks() {
    {
        const std::lock_guard<std::mutex> guard(lock);
        stopping = true;
        changed.notify_all();
    }
    const uint64_t one = 1;
    static_cast<void>(tool::WriteFully(stop.number, &one, sizeof one));
    thread.join();
}

void LiveTracks::Run() {
    try {
        ReadAll();
    } catch (...) {
        const std::lock_guard<std::mutex> guard(lock);
        failure = std::current_exception();
        changed.notify_all();
    }
}

bool LiveTracks::WaitForBytes() {
    {
        std::unique_lock<std::mutex> guard(lock);
        changed.wait(guard, [this] {
            return stopping || stream.Waiting() < kMaxWaiting || !stream.Has(wanted);
        });
        if (stopping)
            return false;
    }
    pollfd waiting[] = {{file.number, POLLIN, 0}, {stop.number, POLLIN, 0}};
    while (poll(waiting, 2, -1) < 0)
        if (errno != EINTR)
            throw tool::SystemFailure(name);
    return waiting[1].revents == 0;
}

// Nobody writes, but another may begin to, as when a detector starts again.
bool LiveTracks::StopComesSoon() {
    pollfd waiting = {stop.number, POLLIN, 0};
    return poll(&waiting, 1, static_cast<int>(kLook.count())) > 0;
}

void LiveTracks::ReadAll() {
    char bytes[65536];
    while (WaitForBytes()) {
        const ssize_t count = read(file.number, bytes, sizeof bytes);
        if (count < 0 && errno != EINTR && errno != EAGAIN)
            throw tool::SystemFailure(name);
        if (count == 0)
            End();
        if (count == 0 && (!latest || StopComesSoon()))
            return;
        if (count > 0)
            Feed(bytes, static_cast<size_t>(count));
    }
}

// A detector says what it has found in one go, so that where its words pause, a frame is complete.
void LiveTracks::Feed(const char *bytes, size_t count) {
    pollfd waiting = {file.number, POLLIN, 0};
    const bool pause = poll(&waiting, 1, 0) == 0;
    const std::lock_guard<std::mutex> guard(lock);
    Tell(stream.Feed({bytes, count}));
    if (latest && pause)
        stream.Pause();
    if (latest)
        if (std::optional<overlay::TrackStream::Frame> frame = stream.TakeNewest())
            newest = std::move(frame->boxes);
    changed.notify_all();
}

void LiveTracks::End() {
    const std::lock_guard<std::mutex> guard(lock);
    Tell(stream.End());
    if (latest)
        if (std::optional<overlay::TrackStream::Frame> frame = stream.TakeNewest())
            newest = std::move(frame->boxes);
    changed.notify_all();
}

void LiveTracks::Tell(const overlay::Errors &errors) {
    for (const overlay::Error &error : errors) {
        if (leftOut < kMaxTold)
            tool::Say(kProgram, error.Message());
        ++leftOut;
    }
}

void LiveTracks::Give(overlay::Engine &engine, int64_t number) {
    std::unique_lock<std::mutex> guard(lock);
    if (latest)
        return engine.SetBoxes(number, newest);
    wanted = number;
    changed.notify_all();
    while (!changed.wait_for(guard, kLook, [&] { return failure || stream.Has(number); }))
        if (StopRequested())
            return;
    if (failure)
        std::rethrow_exception(failure);
    while (const std::optional<overlay::TrackStream::Frame> frame = stream.Take(number))
        engine.SetBoxes(frame->number, frame->boxes);
    changed.notify_all();
}

size_t LiveTracks::LeftOut() {
    const std::lock_guard<std::mutex> guard(lock);
    return leftOut;
}
