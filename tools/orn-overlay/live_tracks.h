// SPDX-License-Identifier: MIT
// Tracked boxes from another program, merged with the frames as both arrive. A thread reads them,
// so that who writes them isn't held up while a frame is waited for.
#pragma once

#include "overlay/engine.h"
#include "overlay/track_stream.h"

#include "common/descriptor.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

// Whether a file of tracks is a pipe, and so arrives while frames flow.
bool AreLive(const std::string &path);

class LiveTracks {
  public:
    struct Settings {
        std::string path;    // or - for standard input
        bool latest = false; // never wait: every frame gets the boxes that came last
        overlay::TrackSettings tracks;
        overlay::InputNames names;
        overlay::FrameShape shape;
    };

    // Throws tool::Failure.
    explicit LiveTracks(const Settings &all);
    ~LiveTracks();
    LiveTracks(const LiveTracks &) = delete;
    LiveTracks &operator=(const LiveTracks &) = delete;

    // Gives the engine the boxes of all frames up to this one. Waits for them, until
    // StopRequested. Throws tool::Failure when they can't be read.
    void Give(overlay::Engine &engine, int64_t number);

    // Lines that were wrong or late, and so left out, of which it has told.
    size_t LeftOut();

  private:
    void Run();
    void ReadAll();
    bool StopComesSoon();
    bool WaitForBytes(); // false when all is over
    void Feed(const char *bytes, size_t count);
    void End();
    void Tell(const overlay::Errors &errors);
    void GiveNewest(overlay::Engine &engine, int64_t number);

    std::string name;
    bool latest;
    tool::Descriptor file;
    tool::Descriptor stop; // can be read once the thread is to end

    std::mutex lock; // of all below
    std::condition_variable changed;
    overlay::TrackStream stream;
    int64_t wanted = 0; // the frame that waits, or that was given last
    size_t leftOut = 0;
    bool stopping = false;
    std::exception_ptr failure;
    std::vector<overlay::TrackedBox> newest;

    std::thread thread;
};
