#include "overlay_tracks.h"

#include "overlay_place.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

constexpr size_t kFields = 6; // that a row must have
constexpr const char *kNames[] = {"frame", "id", "left", "top", "width", "height", "confidence"};
constexpr int64_t kUsualFirst = 1;
constexpr double kMaxWhole = 4294967295.0; // of frames and ids

std::string_view Trimmed(std::string_view field) {
    field = WithoutBlanksBefore(field);
    while (!field.empty() && NextWord(field.substr(field.size() - 1)).empty())
        field.remove_suffix(1);
    return field;
}

std::string_view TakeField(std::string_view &row) {
    const std::string_view field = row.substr(0, row.find(','));
    row.remove_prefix(std::min(field.size() + 1, row.size()));
    return Trimmed(field);
}

[[noreturn]] void RefuseField(const char *name, std::string_view field, const char *reason) {
    throw Failure("bad " + std::string(name) + " " + Quoted(field) + ": " + reason);
}

double ParseReal(std::string_view field, const char *name) {
    double value = 0;
    const auto result = std::from_chars(field.data(), field.data() + field.size(), value);
    if (result.ec != std::errc() || result.ptr != field.data() + field.size() ||
        !std::isfinite(value))
        RefuseField(name, field, "expected a number");
    return value;
}

// Some programs write whole numbers as 1.0 or 1e+00.
int64_t ParseWhole(std::string_view field, const char *name) {
    const double value = ParseReal(field, name);
    if (value != std::floor(value) || std::fabs(value) > kMaxWhole)
        RefuseField(name, field, "expected a whole number");
    return static_cast<int64_t>(value);
}

double ParseSide(std::string_view field, const char *name) {
    const double value = ParseReal(field, name);
    if (value < 0)
        RefuseField(name, field, "expected 0 or more");
    return value;
}

TrackedBox ParseRow(std::string_view row, const TrackSettings &settings) {
    std::string_view fields[kFields + 1];
    size_t count = 0;
    while (!row.empty() && count < std::size(fields))
        fields[count++] = TakeField(row);
    if (count < kFields)
        throw Failure("expected frame,id,left,top,width,height and perhaps confidence, found " +
                      std::to_string(count) + (count == 1 ? " value" : " values"));
    TrackedBox box{};
    box.frame = ParseWhole(fields[0], kNames[0]) - settings.firstFrame.value_or(kUsualFirst);
    if (box.frame < 0 && !settings.firstFrame)
        RefuseField(kNames[0], fields[0], "the first one is 1, unless --first-frame is given");
    box.id = ParseWhole(fields[1], kNames[1]);
    box.left = ParseReal(fields[2], kNames[2]);
    box.top = ParseReal(fields[3], kNames[3]);
    box.right = box.left + ParseSide(fields[4], kNames[4]);
    box.bottom = box.top + ParseSide(fields[5], kNames[5]);
    box.confidence = count > kFields ? ParseReal(fields[6], kNames[6]) : 1;
    return box;
}

bool IsHeader(std::string_view row) {
    return TakeField(row) == kNames[0];
}

bool ComesFirst(const TrackedBox &a, const TrackedBox &b) {
    return std::tie(a.frame, a.id) < std::tie(b.frame, b.id);
}

double Between(double from, double to, double share) {
    return from + share * (to - from);
}

TrackedBox BoxBetween(const TrackedBox &from, const TrackedBox &to, int64_t frame) {
    const double share =
        static_cast<double>(frame - from.frame) / static_cast<double>(to.frame - from.frame);
    return {frame,
            from.id,
            Between(from.left, to.left, share),
            Between(from.top, to.top, share),
            Between(from.right, to.right, share),
            Between(from.bottom, to.bottom, share),
            Between(from.confidence, to.confidence, share)};
}

int32_t Pixel(double edge) {
    constexpr double kFar = 1e12; // keeps the int64 whole; Saturated does the rest
    return Saturated(static_cast<int64_t>(std::floor(std::clamp(edge, -kFar, kFar) + 0.5)));
}

OrnMinRenderPoint FeetOf(const TrackedBox &box) {
    return {Pixel((box.left + box.right) / 2), Pixel(box.bottom)};
}

} // namespace

OrnMinRenderRect RectOf(const TrackedBox &box) {
    return {Pixel(box.left), Pixel(box.top), Pixel(box.right), Pixel(box.bottom)};
}

Tracks::Tracks(std::string_view content, const TrackSettings &settings, FileErrors &errors) {
    bool first = true;
    ParseLines(content, errors, [&](std::string_view row) {
        const bool header = first && IsHeader(row);
        first = false;
        if (header)
            return;
        const TrackedBox box = ParseRow(row, settings);
        if (box.confidence >= settings.minConfidence)
            boxes.push_back(box);
    });
    if (settings.maxGap > 1)
        FillGaps(settings.maxGap);
    std::stable_sort(boxes.begin(), boxes.end(), ComesFirst);
}

// Every edge moves evenly from one row of an id to its next.
void Tracks::FillGaps(int64_t maxGap) {
    std::stable_sort(boxes.begin(), boxes.end(), [](const TrackedBox &a, const TrackedBox &b) {
        return std::tie(a.id, a.frame) < std::tie(b.id, b.frame);
    });
    const size_t rows = boxes.size();
    for (size_t i = 1; i < rows; ++i) {
        const TrackedBox from = boxes[i - 1];
        const TrackedBox to = boxes[i];
        const bool joined = from.id == to.id && from.id >= 0 && to.frame - from.frame <= maxGap;
        for (int64_t frame = from.frame + 1; joined && frame < to.frame; ++frame)
            boxes.push_back(BoxBetween(from, to, frame));
    }
}

Tracks::Boxes Tracks::At(int64_t frame) const {
    const auto isBefore = [](const TrackedBox &box, int64_t number) { return box.frame < number; };
    const TrackedBox *end = boxes.data() + boxes.size();
    const TrackedBox *first = std::lower_bound(boxes.data(), end, frame, isBefore);
    return {first, std::lower_bound(first, end, frame + 1, isBefore)};
}

std::vector<OrnMinRenderPoint> Tracks::Trail(const TrackedBox &box, int32_t frames) const {
    std::vector<OrnMinRenderPoint> points{FeetOf(box)};
    TrackedBox wanted = box;
    while (box.id >= 0 && box.frame - wanted.frame < frames) {
        --wanted.frame;
        const auto found = std::lower_bound(boxes.begin(), boxes.end(), wanted, ComesFirst);
        if (found == boxes.end() || ComesFirst(wanted, *found))
            break;
        points.push_back(FeetOf(*found));
    }
    return points;
}
