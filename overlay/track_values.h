// SPDX-License-Identifier: MIT
// The values of a tracked box as files write them, checked.
#pragma once

#include "track_settings.h"
#include "tracked_box.h"

namespace overlay {

// Of edges, sides and confidences, either way from 0: sums, and what lies between two of them, stay
// finite, and it is far outside every frame.
constexpr double kMaxTrackReal = 1e12;

// All throw Failure, which names the value.
double CheckedReal(double value, const char *name);
double CheckedShare(double value, const char *name);  // of the frame's width or height
int64_t CheckedWhole(double value, const char *name); // some programs write 1 as 1.0 or 1e+00

// From 0, as the settings count.
int64_t CheckedFrame(double value, const TrackSettings &settings, const InputNames &names);

// Fills the edges.
void SetCorners(TrackedBox &box, double left, double top, double right, double bottom);
void SetSides(TrackedBox &box, double left, double top, double width, double height);

// Names are drawn, so they have to be texts.
void SetClassName(TrackedBox &box, std::string_view name);
void SetClassNumber(TrackedBox &box, double number, const TrackSettings &settings);

} // namespace overlay
