// SPDX-License-Identifier: MIT
// Tells on a terminal how far long work has come: "cbfconv: reading 42 %".
#pragma once

#include <chrono>
#include <cstdio>

#include <unistd.h>

namespace tool {

class Progress {
  public:
    explicit Progress(const char *programName) : program(programName) {
    }
    ~Progress() {
        if (shown)
            std::fprintf(stderr, "\r\033[K");
    }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // Cheap enough to be called for every glyph.
    void Tell(const char *step, size_t done, size_t all) {
        if (!terminal || done % 256 != 0)
            return;
        const auto now = Clock::now();
        if (now < next)
            return;
        next = now + std::chrono::milliseconds(100);
        shown = true;
        std::fprintf(stderr, "\r%s: %s %zu %%\033[K", program, step, 100 * done / all);
    }

  private:
    using Clock = std::chrono::steady_clock;

    const char *const program;
    const bool terminal = isatty(STDERR_FILENO) != 0;
    Clock::time_point next =
        Clock::now() + std::chrono::milliseconds(300); // short work says nothing
    bool shown = false;
};

} // namespace tool
