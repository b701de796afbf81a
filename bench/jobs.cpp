// SPDX-License-Identifier: MIT
#include "jobs.h"

#include "fonts.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <random>

namespace bench {

namespace {

constexpr double kPi = 3.14159265358979323846;

const std::string kShortText = "Person 0.97";
const std::string kLongText = "Camera 12, north gate: 3 persons, 2 cars, 21:45:07, 25.0 fps";

// ---- Polygons ----

// count points around the middle of a box, at the shares of its half side that radius(i) gives.
template <class Radius> std::vector<Point> Star(int side, int count, int step, Radius radius) {
    std::vector<Point> points;
    for (int i = 0; i < count; ++i) {
        const double angle = 2 * kPi * i * step / count;
        const double length = side / 2.0 * radius(i);
        points.push_back({int(std::lround(side / 2.0 + length * std::sin(angle))),
                          int(std::lround(side / 2.0 - length * std::cos(angle)))});
    }
    return points;
}

std::vector<Point> Blob(int side, int count) {
    std::mt19937 random(500);
    return Star(side, count, 1, [&](int i) {
        const double angle = 2 * kPi * i / count;
        return 0.75 + 0.13 * std::sin(5 * angle) + 0.08 * std::sin(11 * angle) +
               double(random() % 100) / 2500;
    });
}

// ---- The table ----

struct Table {
    std::vector<Job> jobs;

    Job &Add(const std::string &name, Shape shape, int width, int height, const Targets &y8,
             const Targets &nv12) {
        Job job;
        job.name = name;
        job.shape = shape;
        job.width = width;
        job.height = height;
        job.targets[0] = y8;
        job.targets[1] = nv12;
        jobs.push_back(job);
        return jobs.back();
    }
    Job &Add(const std::string &name, Shape shape, int width, int height, const Targets &both) {
        return Add(name, shape, width, height, both, both);
    }
};

Targets Ratios(double peer, double plain, double floor = 0) {
    Targets targets = {{"peer", peer}, {"plain", plain}};
    if (floor > 0)
        targets.push_back({"floor", floor});
    return targets;
}

void AddRectangles(Table *table) {
    const Shape fill = Shape::Rectangle;
    table->Add("rectangle 16x16", fill, 16, 16, Ratios(2, 1.5, 1.5), Ratios(4, 2, 1.5));
    table->Add("rectangle 200x120", fill, 200, 120, Ratios(1.2, 1.2, 1.1), Ratios(1.1, 2.5, 1.1));
    table->Add("full frame", fill, kWholeFrame, kWholeFrame, Ratios(1, 1.1, 1), Ratios(1, 2, 1));
    table->Add("frame 200x120", Shape::Frame, 200, 120, Ratios(4, 1.7, 1));
}

void AddLines(Table *table) {
    const Shape line = Shape::Line;
    table->Add("horizontal line 32", line, 32, 0, Ratios(2, 1.2, 2));
    table->Add("horizontal line 1000", line, 1000, 0, Ratios(1.4, 1, 2));
    table->Add("vertical line 32", line, 0, 32, Ratios(5, 1.5, 1));
    table->Add("vertical line 900", line, 0, 900, Ratios(3, 1, 1));
    table->Add("diagonal line 32", line, 32, 32, Ratios(7, 1.7, 1.5));
    table->Add("diagonal line 900", line, 900, 900, Ratios(7, 1.7, 1.5));
    table->Add("steep line 12x36", line, 12, 36, Ratios(7, 1.7, 1.5));
    table->Add("steep line 300x900", line, 300, 900, Ratios(7, 1.7, 1.5));

    const Shape dashed = Shape::DashedLine;
    table->Add("dashed horizontal 64", dashed, 64, 0, Ratios(100, 10, 2));
    table->Add("dashed horizontal 1000", dashed, 1000, 0, Ratios(100, 10, 2));
    table->Add("dashed vertical 64", dashed, 0, 64, Ratios(10, 1, 2));
    table->Add("dashed vertical 900", dashed, 0, 900, Ratios(10, 1, 2));
    table->Add("dashed slope 64x40", dashed, 64, 40, Ratios(12, 2, 2));
    table->Add("dashed slope 900x500", dashed, 900, 500, Ratios(12, 2, 2));
}

void AddRoundShapes(Table *table) {
    table->Add("ellipse outline 24x16", Shape::Ellipse, 24, 16, Ratios(12, 1, 2));
    table->Add("ellipse outline 400x300", Shape::Ellipse, 400, 300, Ratios(12, 1, 2));
    table->Add("rounded outline 40x24", Shape::RoundRect, 40, 24, Ratios(12, 1, 2));
    table->Add("rounded outline 400x300", Shape::RoundRect, 400, 300, Ratios(12, 1, 2));
    table->Add("ellipse fill 24x16", Shape::FilledEllipse, 24, 16, Ratios(30, 1.7, 2));
    table->Add("ellipse fill 400x300", Shape::FilledEllipse, 400, 300, Ratios(3, 1.1, 1.2));
    table->Add("rounded fill 40x24", Shape::FilledRoundRect, 40, 24, Ratios(5, 1, 1.2));
    table->Add("rounded fill 400x300", Shape::FilledRoundRect, 400, 300, Ratios(5, 1, 1.2));
}

void AddPolygons(Table *table) {
    const auto add = [table](const std::string &name, int side, const std::vector<Point> &points) {
        table->Add(name, Shape::Polygon, side, side, Ratios(1.6, 4), Ratios(2, 4)).polygon = points;
    };
    add("triangle 120", 120, {{60, 0}, {120, 110}, {6, 84}});
    add("concave 12-gon 200", 200, Star(200, 12, 1, [](int i) { return i % 2 ? 0.55 : 1.0; }));
    add("pentagram 200", 200, Star(200, 5, 2, [](int) { return 1.0; }));
    add("500-vertex blob 300", 300, Blob(300, 500));
}

void AddPictures(Table *table) {
    table->Add("bitmap 64 to 64", Shape::Bitmap, 64, 64, Ratios(1.6, 10));
    table->Add("bitmap 64 to 200", Shape::Bitmap, 200, 200, Ratios(10, 25));
    table->Add("half bitmap 64 to 64", Shape::HalfBitmap, 64, 64, Ratios(1.6, 10));
    table->Add("half bitmap 64 to 200", Shape::HalfBitmap, 200, 200, Ratios(10, 25));
    table->Add("blit 200x120", Shape::Blit, 200, 120, Ratios(1, 1, 1));
    table->Add("blit full frame", Shape::Blit, kWholeFrame, kWholeFrame, Ratios(1, 1, 1));
}

void AddText(Table *table, const std::string &name, Shape shape, int fontSize,
             const std::string &text, const Targets &targets) {
    const Extent extent = TextExtent(fontSize, text);
    Job &job = table->Add(name, shape, extent.width, extent.height, targets);
    job.fontSize = fontSize;
    job.text = text;
    job.layouts[1] = false; // text has luma only
}

void AddTexts(Table *table) {
    // Stamping by masks needs the instructions; without them the bar is lower.
    const bool masks = __builtin_cpu_supports("avx512bw") != 0;
    const Targets plain = masks ? Ratios(35, 10) : Ratios(8, 2.5);
    const Targets outlined = masks ? Ratios(100, 15) : Ratios(25, 3);
    for (const int size : {16, 32})
        for (const std::string &text : {kShortText, kLongText}) {
            const std::string name =
                "text " + std::to_string(text.size()) + " at " + std::to_string(size) + " px";
            AddText(table, name, Shape::Text, size, text, plain);
            AddText(table, "outlined " + name, Shape::OutlinedText, size, text, outlined);
        }
    AddText(table, "measuring 11", Shape::Measuring, 16, kShortText, Ratios(1, 1));
    AddText(table, "measuring 60", Shape::Measuring, 16, kLongText, Ratios(1, 1));

    std::string all;
    for (char c = ' '; c <= '~'; ++c)
        all += c;
    AddText(table, "cold font, 95 glyphs", Shape::ColdFont, 16, all, {{"peer", 10}});
}

void AddOverlay(Table *table) {
    const bool masks = __builtin_cpu_supports("avx512bw") != 0;
    Job &job = table->Add("overlay of 20 labelled boxes", Shape::Overlay, 200, 148,
                          {{"opencv", 40},
                           {"libyuv", 5},
                           {"bgr", 200},
                           {"plain", masks ? 4.0 : 2.0},
                           {"floor", 1.2}});
    job.layouts[0] = false;
}

} // namespace

std::vector<Job> AllJobs() {
    Table table;
    AddRectangles(&table);
    AddLines(&table);
    AddRoundShapes(&table);
    AddPolygons(&table);
    AddPictures(&table);
    AddTexts(&table);
    AddOverlay(&table);
    return table.jobs;
}

// A ring with a cross in it: rows of a few runs each, as an icon has.
bool BitmapBit(int column, int row) {
    const double x = column - (kBitmapSide - 1) / 2.0;
    const double y = row - (kBitmapSide - 1) / 2.0;
    const double radius = std::sqrt(x * x + y * y);
    return (radius > 24 && radius < 31) || (radius < 18 && (std::fabs(x) < 4 || std::fabs(y) < 4));
}

// ---- Frames ----

FrameMemory::FrameMemory(int width, int height, Layout layout) {
    constexpr size_t kAlignment = 64;
    const size_t luma = size_t(width) * size_t(height);
    bytes.resize(luma * 3 / 2 + kAlignment);
    uint8_t *start = bytes.data();
    start += (kAlignment - reinterpret_cast<uintptr_t>(start) % kAlignment) % kAlignment;
    frame = {width, height, width, start, layout == Layout::NV12 ? start + luma : nullptr};
}

size_t FrameMemory::Size() const {
    const size_t luma = size_t(frame.width) * size_t(frame.height);
    return frame.chroma ? luma * 3 / 2 : luma;
}

const Frame &BlitSource(const Frame &frame) {
    static std::map<std::pair<int, bool>, std::unique_ptr<FrameMemory>> sources;
    auto &source = sources[{frame.width, frame.chroma != nullptr}];
    if (!source) {
        source = std::make_unique<FrameMemory>(frame.width, frame.height,
                                               frame.chroma ? Layout::NV12 : Layout::Y8);
        for (size_t i = 0; i < source->Size(); ++i)
            source->frame.luma[i] = uint8_t(130 + i % 100); // nowhere like paper
    }
    return source->frame;
}

// ---- Places ----

namespace {

size_t CountPlaces(const Job &job, const Frame &frame, bool cold) {
    const size_t unit = job.shape == Shape::Overlay ? kOverlayBoxes : 1;
    if (!cold)
        return unit == 1 ? 4 : unit;
    // As many as cover the frame once, counting the cache lines that a box touches.
    const double area = double(frame.width) * frame.height;
    const double box = std::max(64, job.width + 64) * double(std::max(1, job.height));
    return unit * std::clamp(size_t(area / box), size_t(8), size_t(4096));
}

} // namespace

Places ChoosePlaces(const Job &job, const Frame &frame, bool cold) {
    constexpr int kMargin = 4; // outlines reach beyond their box
    const int spareX = frame.width - job.width - 2 * kMargin;
    const int spareY = frame.height - job.height - 2 * kMargin;
    if (spareX < 0 || spareY < 0)
        return {{0, 0}};
    std::mt19937 random(1);
    Places places(CountPlaces(job, frame, cold));
    for (Point &place : places) {
        place.x = (kMargin + int(random() % unsigned(spareX + 1))) / 2 * 2;
        place.y = (kMargin + int(random() % unsigned(spareY + 1))) / 2 * 2;
    }
    return places;
}

// ---- Overlays ----

namespace {

struct Step {
    Painter painter;
    Point offset;
};
using Steps = std::vector<Step>;

constexpr int kLabelFont = 16;
constexpr int kLabelHeight = 24;
constexpr int kLabelMargin = 6;

Job StepJob(Shape shape, int width, int height, Colour ink) {
    Job job;
    job.shape = shape;
    job.width = width;
    job.height = height;
    job.ink = ink;
    return job;
}

Steps LabelledBox(const Frame &frame, MakePainter make, MakePainter fallback,
                  const std::string &label) {
    const Extent extent = TextExtent(kLabelFont, label);
    const int width = (extent.width + 2 * kLabelMargin) / 2 * 2;
    Job measure = StepJob(Shape::Measuring, width, kLabelHeight, {});
    const Job box = StepJob(Shape::Frame, 200, 120, {150, 60, 190});
    const Job background = StepJob(Shape::Rectangle, width, kLabelHeight, {60, 150, 100});
    Job text = StepJob(Shape::OutlinedText, width, kLabelHeight, {235, 128, 128});
    measure.text = text.text = label;
    measure.fontSize = text.fontSize = kLabelFont;

    const auto step = [&](const Job &job, Point offset) {
        const Painter painter = make(job, frame);
        return Step{painter ? painter : fallback(job, frame), offset};
    };
    return {step(measure, {0, 0}), step(box, {0, 28}), step(background, {0, 0}),
            step(text, {kLabelMargin, 2})};
}

} // namespace

Painter MakeOverlay(const Frame &frame, MakePainter make, MakePainter fallback) {
    auto boxes = std::make_shared<std::vector<Steps>>();
    for (const char *label : {"Person 0.97", "Car 0.83", "Bicycle 0.64", "Truck 0.91"})
        boxes->push_back(LabelledBox(frame, make, fallback, label));
    auto one = std::make_shared<Places>(1);
    return [boxes, one](const Places &places) {
        for (size_t i = 0; i < places.size(); ++i)
            for (const Step &step : (*boxes)[i % boxes->size()]) {
                (*one)[0] = {places[i].x + step.offset.x, places[i].y + step.offset.y};
                if (step.painter)
                    step.painter(*one);
            }
    };
}

} // namespace bench
