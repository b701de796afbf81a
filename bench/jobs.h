// SPDX-License-Identifier: MIT
// What the benchmark draws, where it draws it, and what a contender is: a library, or a way of
// writing the same by hand, that is timed at the same jobs on the same frame.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

enum class Layout { Y8, NV12 };

struct Frame {
    int width;
    int height;
    ptrdiff_t stride; // of both planes
    uint8_t *luma;
    uint8_t *chroma; // null in Y8
};

// A frame in memory of its own, both planes in one block as decoders have them.
struct FrameMemory {
    std::vector<uint8_t> bytes;
    Frame frame;

    FrameMemory(int width, int height, Layout layout);
    size_t Size() const; // of the pixels, from frame.luma on
};

struct Colour {
    uint8_t y;
    uint8_t u;
    uint8_t v;
};

struct Point {
    int x;
    int y;
};

enum class Shape {
    Rectangle,
    Frame,
    Line, // of height 0: horizontal; of width 0: vertical
    DashedLine,
    Ellipse,
    FilledEllipse,
    RoundRect,
    FilledRoundRect,
    Polygon,
    Bitmap,
    HalfBitmap, // half transparent
    Blit,
    Text,
    OutlinedText,
    Measuring,
    ColdFont, // load a font, draw every glyph of the text
    Overlay   // a labelled box at each of kOverlayBoxes places
};

// What the library is meant to reach: how many times its own time a contender takes, or how many
// times the floor's it takes itself. "peer" is the fastest of the peers.
struct Target {
    std::string contender;
    double ratio;
};
using Targets = std::vector<Target>;

struct Job {
    std::string name;
    Shape shape = Shape::Rectangle;
    int width = 0; // of the box that is drawn into
    int height = 0;
    int fontSize = 0;
    std::string text;
    std::vector<Point> polygon; // relative to the place
    Colour ink = {235, 90, 160};
    uint8_t outline = 20;
    Targets targets[2] = {}; // by layout; the layouts that are run
    bool layouts[2] = {true, true};
};

constexpr int kWholeFrame = -1; // as a width: the job's box is the frame
constexpr Colour kPaper = {110, 128, 128};
constexpr int kBitmapSide = 64;
constexpr int kRadius = 12; // of rounded corners; small boxes cut it down
constexpr size_t kOverlayBoxes = 20;

// Every job of the benchmark.
std::vector<Job> AllJobs();

inline int CornerRadius(const Job &job) {
    return std::min(kRadius, std::min(job.width, job.height) / 4);
}

// The picture of the bitmap jobs.
bool BitmapBit(int column, int row);

// The picture that the blit jobs copy: another frame of the same form.
const Frame &BlitSource(const Frame &frame);

// Where to draw: even coordinates, so that every contender has the same chroma samples to draw.
using Places = std::vector<Point>;
Places ChoosePlaces(const Job &job, const Frame &frame, bool cold);

// Draws a job once at each of the places.
using Painter = std::function<void(const Places &)>;

// The loop stands inside, so that a contender's time holds no indirect call for each drawing.
template <class Draw> Painter AtEveryPlace(Draw draw) {
    return [draw](const Places &places) mutable {
        for (const Point &place : places)
            draw(place.x, place.y);
    };
}

// A painter of the job on the frame, or none where the contender has no such call. Overlays are
// put together from a contender's other painters, see MakeOverlay.
using MakePainter = Painter (*)(const Job &, const Frame &);

Painter MakeLibrary(const Job &job, const Frame &frame);
Painter MakePlain(const Job &job, const Frame &frame);
Painter MakeFloor(const Job &job, const Frame &frame);
Painter MakeOpenCv(const Job &job, const Frame &frame);
Painter MakeCairo(const Job &job, const Frame &frame);
Painter MakePixman(const Job &job, const Frame &frame);
Painter MakeLibyuv(const Job &job, const Frame &frame);
Painter MakeFreeType(const Job &job, const Frame &frame);

// OpenCV again, but by way of a BGR copy of the frame: overlays only.
Painter MakeOpenCvBgr(const Job &job, const Frame &frame);

// Measures a label, draws the box, the label's background and its outlined text, at each place.
// What make can't do, fallback does.
Painter MakeOverlay(const Frame &frame, MakePainter make, MakePainter fallback);

} // namespace bench
