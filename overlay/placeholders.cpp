// SPDX-License-Identifier: MIT
// One table says which values there are. What stands in braces and is none of them stays as it is.
#include "placeholders.h"

#include <algorithm>
#include <cinttypes>
#include <iterator>

namespace overlay {

namespace {

std::string FrameNumber(const Canvas &canvas) {
    return std::to_string(canvas.frameNumber);
}

// Hours may grow past two digits; tenths are cut, as on a clock. Multiplied first, times that frame
// rates express exactly come out exactly.
std::string ClockTime(const Canvas &canvas) {
    constexpr double kMaxTenths = 9e15; // that a double counts one by one
    const double exact = static_cast<double>(canvas.time.ticks) * 10 / canvas.time.ticksPerSecond;
    const auto tenths = static_cast<int64_t>(std::max(0.0, std::min(kMaxTenths, exact)));
    char text[64];
    std::snprintf(text, sizeof text, "%02" PRId64 ":%02" PRId64 ":%02" PRId64 ".%" PRId64,
                  tenths / 36000, tenths / 600 % 60, tenths / 10 % 60, tenths % 10);
    return text;
}

std::string Id(const Canvas &canvas) {
    return std::to_string(canvas.box->id);
}

std::string Confidence(const Canvas &canvas) {
    char text[400]; // the largest double has 309 digits
    std::snprintf(text, sizeof text, "%.2f", canvas.box->confidence);
    return text;
}

std::string ClassName(const Canvas &canvas) {
    return std::string(canvas.box->className);
}

struct Placeholder {
    std::string_view name;
    bool ofBox; // means something only where a tracked box is drawn
    std::string (*value)(const Canvas &canvas);
};

constexpr Placeholder kPlaceholders[] = {
    {"{frame}", false, FrameNumber}, {"{time}", false, ClockTime}, {"{id}", true, Id},
    {"{conf}", true, Confidence},    {"{class}", true, ClassName},
};

// The one that a text begins with; null if it is none.
const Placeholder *PlaceholderBefore(std::string_view text, bool hasBox) {
    const auto found = std::find_if(
        std::begin(kPlaceholders), std::end(kPlaceholders), [text, hasBox](const Placeholder &p) {
            return (hasBox || !p.ofBox) && text.substr(0, p.name.size()) == p.name;
        });
    return found == std::end(kPlaceholders) ? nullptr : found;
}

} // namespace

std::string TextOf(const Canvas &canvas, const Overlay &overlay) {
    if (!overlay.hasPlaceholders)
        return overlay.text;
    std::string shown;
    for (std::string_view rest = overlay.text; !rest.empty();) {
        if (const Placeholder *placeholder = PlaceholderBefore(rest, canvas.box != nullptr)) {
            shown += placeholder->value(canvas);
            rest.remove_prefix(placeholder->name.size());
            continue;
        }
        const size_t plain = std::min(rest.find('{', 1), rest.size());
        shown += rest.substr(0, plain);
        rest.remove_prefix(plain);
    }
    return shown;
}

} // namespace overlay
