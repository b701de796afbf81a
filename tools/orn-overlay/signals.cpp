// SPDX-License-Identifier: MIT
#include "signals.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t reloadRequested = 0;
volatile std::sig_atomic_t stopRequested = 0;

} // namespace

// With SA_RESTART: a frame that is being read is read to its end.
void HandleReloads() {
    struct sigaction action = {};
    if (sigaction(SIGHUP, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
        return;
    action.sa_handler = [](int) { reloadRequested = 1; };
    action.sa_flags = SA_RESTART;
    sigaction(SIGHUP, &action, nullptr);
}

bool TakeReloadRequest() {
    const bool requested = reloadRequested != 0;
    reloadRequested = 0;
    return requested;
}

void RequestStop() {
    stopRequested = 1;
}

bool StopRequested() {
    return stopRequested != 0;
}
