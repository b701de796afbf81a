// SPDX-License-Identifier: MIT
// What signals ask for while frames flow.
#pragma once

// SIGHUP, from now on, makes TakeReloadRequest true once, unless it is ignored (under nohup, say).
void HandleReloads();
bool TakeReloadRequest();

// A film is to be ended before its end.
void RequestStop(); // may be called in handlers
bool StopRequested();
