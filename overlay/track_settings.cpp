// SPDX-License-Identifier: MIT
#include "track_settings.h"

#include <utility>

namespace overlay {

std::optional<TrackFormat> TrackFormatOf(std::string_view name) {
    constexpr std::pair<std::string_view, TrackFormat> kNames[] = {
        {"mot", TrackFormat::Mot},   {"jsonl", TrackFormat::JsonLines}, {"yolo", TrackFormat::Yolo},
        {"coco", TrackFormat::Coco}, {"csv", TrackFormat::Csv},
    };
    for (const auto &[known, format] : kNames)
        if (known == name)
            return format;
    return std::nullopt;
}

} // namespace overlay
