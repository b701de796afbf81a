// SPDX-License-Identifier: MIT
// Draws and encodes in a thread of its own, while the caller decodes what comes next.
#pragma once

#include "report.h"
#include "video_canvas.h"
#include "video_input.h"
#include "video_output.h"

#include "overlay/engine.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

class Painter {
  public:
    // Uses these from its thread until Finish.
    Painter(overlay::Engine &withEngine, const overlay::FrameShape &shape, Film &intoFilm,
            Report &toReport);
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

    overlay::Engine &engine;
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
