// SPDX-License-Identifier: MIT
// Rows of tracks: numbers between commas, which may have blanks around them.
#include "tracks_csv.h"

#include "words.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace overlay {

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

[[noreturn]] void RefuseField(const char *name, std::string_view field, const std::string &reason) {
    throw Failure("bad " + std::string(name) + " " + Quoted(field) + ": " + reason);
}

double ParseReal(std::string_view field, const char *name) {
    const std::optional<double> value = RealOf(field);
    if (!value)
        RefuseField(name, field, "expected a number");
    if (std::fabs(*value) > kMaxTrackReal)
        RefuseField(name, field, "expected a number from -1e12 to 1e12");
    return *value;
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

TrackedBox ParseRow(std::string_view row, const TrackSettings &settings, const InputNames &names) {
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
        RefuseField(kNames[0], fields[0],
                    "the first one is 1, unless " + names.firstFrame + " is given");
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

} // namespace

Tracks ParseTracks(std::string_view content, const std::string &file, const TrackSettings &settings,
                   const InputNames &names, Errors &errors) {
    std::vector<TrackedBox> boxes;
    bool first = true;
    ParseLines(content, file, errors, [&](std::string_view row, size_t) {
        const bool header = first && IsHeader(row);
        first = false;
        if (header)
            return;
        const TrackedBox box = ParseRow(row, settings, names);
        if (box.confidence >= settings.minConfidence)
            boxes.push_back(box);
    });
    return Tracks(std::move(boxes), settings.maxGap);
}

} // namespace overlay
