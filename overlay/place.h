// SPDX-License-Identifier: MIT
// Places of overlays as the script writes them, for example 12, right-20, 50%, +80, text.right+4,
// and as pixels of a frame.
#pragma once

#include <cstdint>
#include <optional>
#include <orn_min_render.h>
#include <string_view>

namespace overlay {

enum class Axis { X, Y };

// What a place counts from.
enum class Source { Frame, Before, Text, Box }; // Before: the coordinate before it on its axis
enum class Edge { Origin, Start, Middle, End }; // Origin: none was named, counted from the start

struct Place {
    Axis axis = Axis::X;
    Source source = Source::Frame;
    Edge edge = Edge::Origin;
    double share = 0; // of the frame's width or height
    int64_t offset = 0;
};

// Reads one coordinate. Throws Failure.
Place ParsePlace(std::string_view word, Axis axis);

// Reads a length: pixels, or a share of the frame's width or height. Throws Failure.
Place ParseLength(std::string_view word, Axis axis);

// Reads a size, which is more than 0: pixels, or a share of the frame's height. Throws Failure.
Place ParseSize(std::string_view word);

// Of what ParseSize has read, as pixels: at least one.
int32_t PixelsOf(const Place &size, int32_t frameHeight);

// What places are resolved against.
struct Surroundings {
    OrnMinRenderRect frame;
    std::optional<OrnMinRenderRect> text; // the last one that this frame has shown
    std::optional<OrnMinRenderRect> box;  // the tracked one
};

// Throughout one overlay: each place may count from the one before.
class PlaceResolver {
  public:
    explicit PlaceResolver(const Surroundings &all) : surroundings(all) {
    }

    // Nothing when it counts from what is not there. Saturates at the int32 limits.
    std::optional<int32_t> Resolve(const Place &place);

  private:
    std::optional<OrnMinRenderRect> Reference(const Place &place) const;

    const Surroundings &surroundings;
    OrnMinRenderPoint before{0, 0};
};

// The nearest int32.
int32_t Saturated(int64_t value);

} // namespace overlay
