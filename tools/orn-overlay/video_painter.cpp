// SPDX-License-Identifier: MIT
// Few frames wait, since each has megabytes; packets are small, but a clip may have any number.
#include "video_painter.h"

namespace {

constexpr size_t kMaxFrames = 2;
constexpr size_t kMaxItems = 256;
constexpr size_t kItemsOfFrame = 8; // of sound, mostly

} // namespace

Painter::Painter(Overlays &withOverlays, const overlay::FrameShape &shape, Film &intoFilm,
                 Report &toReport, size_t framesToWait)
    : overlays(withOverlays), delay(framesToWait), canvas(shape, intoFilm.Layout()), film(intoFilm),
      report(toReport), thread([this] { Run(); }) {
}

Painter::~Painter() {
    Finish();
}

bool Painter::Push(ClipItem item) {
    std::unique_lock<std::mutex> guard(lock);
    changed.wait(guard, [this] {
        return failure || (waitingFrames < kMaxFrames + delay &&
                           items.size() < kMaxItems + kItemsOfFrame * delay);
    });
    if (failure)
        return false;
    waitingFrames += item.picture.frame != nullptr;
    items.push_back(std::move(item));
    changed.notify_all();
    return true;
}

std::exception_ptr Painter::Finish() {
    {
        const std::lock_guard<std::mutex> guard(lock);
        complete = true;
        changed.notify_all();
    }
    if (thread.joinable())
        thread.join();
    return failure;
}

void Painter::Run() {
    try {
        while (std::optional<ClipItem> item = Next())
            Work(std::move(*item));
    } catch (...) {
        const std::lock_guard<std::mutex> guard(lock);
        failure = std::current_exception();
        changed.notify_all();
    }
}

std::optional<ClipItem> Painter::Next() {
    std::unique_lock<std::mutex> guard(lock);
    changed.wait(guard, [this] { return complete || !items.empty(); });
    if (items.empty())
        return std::nullopt;
    ClipItem item = std::move(items.front());
    items.pop_front();
    waitingFrames -= item.picture.frame != nullptr;
    changed.notify_all();
    return item;
}

void Painter::Work(ClipItem item) {
    if (item.packet) {
        film.WritePacket(std::move(item.packet));
        return;
    }
    ClipFrame &picture = item.picture;
    const OrnMinRenderImage image = canvas.Place(std::move(picture.frame));
    const Report::Seconds drawing = overlays.Draw(image, picture.number, picture.time);
    report.Drawn(drawing, picture.EndSeconds());
    film.WriteFrame(canvas.Take(), picture.pts, picture.duration);
}
