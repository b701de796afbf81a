// SPDX-License-Identifier: MIT
// Draws and encodes in a thread of its own, while the caller decodes what comes next.
#pragma once

#include "overlays.h"
#include "report.h"
#include "video_canvas.h"
#include "video_input.h"
#include "video_output.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

class Painter {
  public:
    // Uses these from its thread until Finish. More frames may wait than are needed for two threads
    // to work: for tracks that come so late.
    Painter(Overlays &withOverlays, const overlay::FrameShape &shape, Film &intoFilm,
            Report &toReport, size_t framesToWait);
    ~Painter();
    Painter(const Painter &) = delete;
    Painter &operator=(const Painter &) = delete;

    // Waits while there is enough to do. False when nothing more is wanted, since something went
    // wrong.
    bool Push(ClipItem item);

    // Waits until all is done. What went wrong, if anything did.
    std::exception_ptr Finish();

  private:
    void Run();
    std::optional<ClipItem> Next();
    void Work(ClipItem item);

    Overlays &overlays;
    const size_t delay;
    VideoCanvas canvas;
    Film &film;
    Report &report;

    std::mutex lock; // of all below
    std::condition_variable changed;
    std::deque<ClipItem> items;
    size_t waitingFrames = 0;
    bool complete = false; // nothing more will be pushed
    std::exception_ptr failure;
    std::thread thread;
};
