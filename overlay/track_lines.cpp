// SPDX-License-Identifier: MIT
// A format that wasn't named is told by how the first line begins: { for JSON lines, [ for COCO, a
// word for columns with names; of rows of numbers, those of MOTChallenge have commas. These may
// have a first row "frame,...", too.
#include "track_lines.h"

#include "track_json.h"
#include "track_values.h"
#include "words.h"

#include <algorithm>
#include <utility>

namespace overlay {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kSpace = " \t\r\n";

TrackFormat FormatOf(std::string_view line) {
    const std::string_view word = NextWord(line);
    if (word[0] == '{')
        return TrackFormat::JsonLines;
    if (word[0] == '[')
        return TrackFormat::Coco;
    if (line.find(',') == std::string_view::npos)
        return TrackFormat::Yolo;
    const Fields fields = FieldsBetweenCommas(line);
    const bool isPlainHeader = fields.values[0] == "frame" && !Columns::AreNamed(fields);
    return isPlainHeader || RealOf(fields.values[0]) ? TrackFormat::Mot : TrackFormat::Csv;
}

bool IsCoco(std::string_view content, const TrackSettings &settings) {
    const size_t first = content.find_first_not_of(kSpace);
    return settings.format == TrackFormat::Coco ||
           (settings.format == TrackFormat::FromContent && first != std::string_view::npos &&
            content[first] == '[');
}

void LeaveOutDoubtful(std::vector<TrackedBox> &boxes, const TrackSettings &settings) {
    const auto isDoubtful = [&settings](const TrackedBox &box) {
        return box.confidence < settings.minConfidence;
    };
    boxes.erase(std::remove_if(boxes.begin(), boxes.end(), isDoubtful), boxes.end());
}

void ParseLinesOf(const TrackFile &file, TrackLines &lines, std::vector<TrackedBox> &boxes,
                  Errors &errors) {
    ParseLines(file.content, file.name, errors,
               [&](std::string_view line, size_t) { lines.Take(line, boxes); });
}

// A file whose rows are all of one frame.
void ParseFrameFile(const TrackFile &file, const TrackSettings &settings, const InputNames &names,
                    std::vector<TrackedBox> &boxes, Errors &errors) {
    ParseLines(file.content, file.name, errors, [&](std::string_view line, size_t) {
        TrackedBox box = BoxOfYolo(FieldsBetweenBlanks(line), false, settings, names);
        box.frame = CheckedFrame(static_cast<double>(*file.frame), settings, names);
        boxes.push_back(std::move(box));
    });
}

} // namespace

TrackLines::TrackLines(TrackSettings all, InputNames allNames)
    : settings(std::move(all)), names(std::move(allNames)) {
}

void TrackLines::Begin(std::string_view line) {
    if (settings.format == TrackFormat::FromContent)
        settings.format = FormatOf(line);
    if (settings.format == TrackFormat::Coco)
        throw Failure("COCO results are one array, which can't be read line by line");
    begun = true;
    if (settings.format == TrackFormat::Csv)
        columns.emplace(FieldsBetweenCommas(line));
    startsWithHeader = columns || (settings.format == TrackFormat::Mot &&
                                   FieldsBetweenCommas(line).values[0] == "frame");
}

TrackedBox TrackLines::BoxOf(std::string_view row) const {
    if (settings.format == TrackFormat::Csv)
        return columns->BoxOf(FieldsBetweenCommas(row), settings, names);
    if (settings.format == TrackFormat::Mot)
        return BoxOfMot(FieldsBetweenCommas(row), settings, names);
    const Fields fields = FieldsBetweenBlanks(row);
    return BoxOfYolo(fields, fields.count != 5, settings, names);
}

std::optional<TrackLines::Line> TrackLines::Take(std::string_view line,
                                                 std::vector<TrackedBox> &boxes) {
    if (!begun) {
        Begin(line);
        if (startsWithHeader)
            return std::nullopt;
    }
    if (settings.format == TrackFormat::Csv && !columns)
        return std::nullopt; // of which the first row has told
    if (settings.format == TrackFormat::JsonLines) {
        std::vector<TrackedBox> ofLine;
        const int64_t frame = ParseJsonLine(line, settings, names, ofLine);
        LeaveOutDoubtful(ofLine, settings);
        boxes.insert(boxes.end(), ofLine.begin(), ofLine.end());
        return Line{frame, true};
    }
    TrackedBox box = BoxOf(line);
    const Line read{box.frame, false};
    if (box.confidence >= settings.minConfidence)
        boxes.push_back(std::move(box));
    return read;
}

ParsedTracks ParseTracks(const std::vector<TrackFile> &files, const TrackSettings &settings,
                         const InputNames &names, Errors &errors) {
    ParsedTracks parsed;
    for (const TrackFile &file : files) {
        std::string_view content = file.content;
        if (content.substr(0, kByteOrderMark.size()) == kByteOrderMark)
            content.remove_prefix(kByteOrderMark.size());
        if (file.frame) {
            ParseFrameFile(file, settings, names, parsed.boxes, errors);
            parsed.inShares = true;
        } else if (IsCoco(content, settings)) {
            parsed.boxes = ParseCoco(content, file.name, settings, names, errors);
        } else {
            TrackLines lines(settings, names);
            ParseLinesOf(file, lines, parsed.boxes, errors);
            parsed.inShares = lines.Format() == TrackFormat::Yolo;
        }
    }
    LeaveOutDoubtful(parsed.boxes, settings);
    return parsed;
}

} // namespace overlay
