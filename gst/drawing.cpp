// SPDX-License-Identifier: MIT
// Lines of tracks are allowed in every script: regions may come with any frame.
#include "drawing.h"

#include "frame_shape.h"
#include "regions.h"

#include "overlay/start_time.h"

#ifdef ORN_HAS_PICTURES
#include "overlay/ffmpeg_pictures.h"
#endif

#include <memory>

namespace {

void Add(Problems &problems, const overlay::Errors &errors) {
    for (const overlay::Error &error : errors)
        problems.push_back(error.Message());
}

void Add(Problems &problems, const Problems &others) {
    problems.insert(problems.end(), others.begin(), others.end());
}

// Nothing, and what is wrong, when the file can't be read.
std::optional<std::string> ReadFile(const std::string &path, Problems &problems) {
    gchar *bytes = nullptr;
    gsize count = 0;
    GError *error = nullptr;
    if (!g_file_get_contents(path.c_str(), &bytes, &count, &error)) {
        problems.emplace_back(error->message); // names the file
        g_error_free(error);
        return std::nullopt;
    }
    const std::unique_ptr<gchar, decltype(&g_free)> owner(bytes, g_free);
    return std::string(bytes, count);
}

overlay::Settings EngineSettings() {
    overlay::Settings settings;
    settings.names = {"font-location", "tracks-location", "orn-overlay's --first-frame"};
    settings.hasTracks = true;
#ifdef ORN_HAS_PICTURES
    settings.decodePicture = overlay::DecodePicture;
#endif
    return settings;
}

} // namespace

Drawing::Drawing() : engine(EngineSettings()) {
    gst_video_info_init(&info);
}

Problems Drawing::Load(const Wishes &wishes) {
    Problems problems;
    if ((wishes.changed & kFont) != 0 && !wishes.fontLocation.empty())
        Add(problems, engine.SetFont(wishes.fontLocation));
    if ((wishes.changed & (kFont | kScript)) != 0) // which takes the font that there is now
        Add(problems, SetScript(wishes));
    if ((wishes.changed & kTracks) != 0)
        Add(problems, SetTracks(wishes));
    if ((wishes.changed & kClock) != 0)
        Add(problems, SetClock(wishes));
    for (const std::string &line : wishes.controlLines)
        Add(problems, engine.Control(line, "control", 0));
    return problems;
}

Problems Drawing::SetScript(const Wishes &wishes) {
    Problems problems;
    const bool inFile = !wishes.script && !wishes.scriptLocation.empty();
    const std::optional<std::string> script =
        inFile ? ReadFile(wishes.scriptLocation, problems) : wishes.script.value_or("");
    if (script)
        Add(problems, engine.SetScript(*script, inFile ? wishes.scriptLocation : "script"));
    return problems;
}

Problems Drawing::SetTracks(const Wishes &wishes) {
    Problems problems;
    overlay::TrackSettings settings;
    settings.maxGap = wishes.maxGap;
    const auto format = overlay::TrackFormatOf(wishes.tracksFormat);
    if (!wishes.tracksFormat.empty() && !format)
        return {"tracks-format is mot, jsonl, yolo, coco or csv, not " + wishes.tracksFormat};
    settings.format = format.value_or(settings.format);
    if (!wishes.classesLocation.empty())
        if (const std::optional<std::string> names = ReadFile(wishes.classesLocation, problems)) {
            overlay::Errors errors;
            settings.classes = overlay::ParseClassNames(*names, wishes.classesLocation, errors);
            Add(problems, errors);
        }
    const std::string &path = wishes.tracksLocation;
    const std::optional<std::string> tracks =
        path.empty() ? std::string() : ReadFile(path, problems);
    if (tracks && problems.empty())
        Add(problems, engine.SetTracks({{*tracks, path}}, settings));
    return problems;
}

Problems Drawing::SetClock(const Wishes &wishes) {
    overlay::ClockSettings clock;
    clock.utc = wishes.utc;
    if (!wishes.start.empty()) {
        clock.start = overlay::ParseStartTime(wishes.start, wishes.utc);
        if (!clock.start)
            return {"start is a time such as 2026-11-23T14:05:09Z, not " + wishes.start};
    }
    engine.SetClock(clock);
    return {};
}

Problems Drawing::TakeNotes() {
    Problems notes;
    Add(notes, engine.TakeNotes());
    return notes;
}

Problems Drawing::SetFrames(const GstVideoInfo &frames) {
    Problems problems;
    info = frames;
    Add(problems, engine.SetFrames(ShapeOf(info)));
    return problems;
}

// Where the stream does not say, as its frame rate has it.
overlay::FrameTime Drawing::TimeOf(GstClockTime timeStamp, const GstSegment &segment) const {
    if (GST_CLOCK_TIME_IS_VALID(timeStamp) && segment.format == GST_FORMAT_TIME) {
        guint64 streamTime = 0;
        const gint sign =
            gst_segment_to_stream_time_full(&segment, GST_FORMAT_TIME, timeStamp, &streamTime);
        if (sign != 0)
            return {sign * static_cast<int64_t>(streamTime), static_cast<double>(GST_SECOND)};
    }
    if (info.fps_n <= 0)
        return {};
    return {number, static_cast<double>(info.fps_n) / info.fps_d};
}

bool Drawing::Begin(GstBuffer &buffer, const GstSegment &segment, const Switches &switches) {
    const GstClockTime timeStamp = GST_BUFFER_PTS(&buffer);
    number = numbers.Next(timeStamp, info);
    time = TimeOf(timeStamp, segment);
    boxes.clear();
    if (switches.drawRegions)
        ReadRegions(buffer, boxes);
    engine.SetBoxes(number, boxes);
    planes = switches.enabled ? engine.Touches(number) : overlay::Planes::None;
    return planes != overlay::Planes::None;
}

void Drawing::Draw(GstVideoFrame &frame) {
    images.DrawInto(frame, planes,
                    [this](const OrnMinRenderImage &image) { engine.Draw(image, number, time); });
}
