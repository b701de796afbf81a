// SPDX-License-Identifier: MIT
// Labels choose one after the other. Each tries a fixed list of places around its box and takes the
// one that costs least: what it covers there, and a little for being further down in the list. The
// place that it had before is left only for one that is clearly better.
#include "label_places.h"

#include "place.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace overlay {

namespace {

constexpr int64_t kMaxStep = 50; // frames, over which places are kept

// Of each pixel that is covered. A label that is covered can't be read at all.
constexpr int64_t kCostOfLabels = 16;
constexpr int64_t kCostOfBoxes = 4;
constexpr int64_t kCostOfOwnBox = 2;

// Of the label's own pixels: for any place but the asked one or the one before, and for each step
// down the list. A twentieth of another label under it costs as much.
constexpr int64_t kCostOfMoving = 1;
constexpr int64_t kStepsPerPixel = 32;

// On one axis: the label ends where the box starts, starts with it, and so on.
enum class Side { Before, Start, Middle, End, After };

struct PlaceRule {
    Side x;
    Side y;
};

// Above, below, inside, beside. The asked place comes first, as number 0.
constexpr PlaceRule kPlaces[] = {
    {Side::Start, Side::Before}, {Side::End, Side::Before},    {Side::Middle, Side::Before},
    {Side::Start, Side::After},  {Side::End, Side::After},     {Side::Middle, Side::After},
    {Side::Start, Side::Start},  {Side::End, Side::Start},     {Side::Start, Side::End},
    {Side::End, Side::End},      {Side::After, Side::Start},   {Side::Before, Side::Start},
    {Side::After, Side::Middle}, {Side::Before, Side::Middle}, {Side::After, Side::End},
    {Side::Before, Side::End},
};
constexpr size_t kPlaceCount = std::size(kPlaces) + 1;

int64_t StartAt(int64_t start, int64_t end, int64_t size, Side side) {
    switch (side) {
    case Side::Before:
        return start - size;
    case Side::Start:
        return start;
    case Side::Middle:
        return (start + end - size) / 2;
    case Side::End:
        return end - size;
    default:
        return end;
    }
}

// What is too long starts at 0.
int32_t Inside(int64_t start, int64_t size, int32_t frameSize) {
    return Saturated(std::max<int64_t>(0, std::min(start, frameSize - size)));
}

OrnMinRenderRect Common(const OrnMinRenderRect &a, const OrnMinRenderRect &b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

// Of rectangles in a frame.
int64_t CommonArea(const OrnMinRenderRect &a, const OrnMinRenderRect &b) {
    const int32_t width = std::min(a.right, b.right) - std::max(a.left, b.left);
    const int32_t height = std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
    return width > 0 && height > 0 ? int64_t{width} * height : 0;
}

bool IsSame(const OrnMinRenderRect &a, const OrnMinRenderRect &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

} // namespace

void LabelPlaces::BeginFrame(int64_t number, int32_t width, int32_t height) {
    frame = {0, 0, width, height};
    boxes.clear();
    labels.clear();
    if (number != current) {
        before.swap(now);
        if (number < current || number - current > kMaxStep)
            before.clear();
    }
    now.clear();
    current = number;
}

// Of what lies outside of the frame, nothing is kept.
void LabelPlaces::Add(const OrnMinRenderRect &rect, std::vector<OrnMinRenderRect> &to) const {
    const OrnMinRenderRect seen = Common(rect, frame);
    if (seen.left < seen.right && seen.top < seen.bottom && to.size() < kMaxRects)
        to.push_back(seen);
}

OrnMinRenderRect LabelPlaces::At(const Request &request, size_t place) const {
    if (place == 0)
        return request.asked;
    const OrnMinRenderRect &box = request.around;
    const int64_t width = int64_t{request.asked.right} - request.asked.left;
    const int64_t height = int64_t{request.asked.bottom} - request.asked.top;
    const PlaceRule rule = kPlaces[place - 1];
    const int32_t left = Inside(StartAt(box.left, box.right, width, rule.x), width, frame.right);
    const int32_t top = Inside(StartAt(box.top, box.bottom, height, rule.y), height, frame.bottom);
    return {left, top, Saturated(left + width), Saturated(top + height)};
}

OrnMinRenderRect LabelPlaces::ReachOf(const Request &request) const {
    OrnMinRenderRect reach = At(request, 0);
    for (size_t place = 1; place < kPlaceCount; ++place) {
        const OrnMinRenderRect rect = At(request, place);
        reach = {std::min(reach.left, rect.left), std::min(reach.top, rect.top),
                 std::max(reach.right, rect.right), std::max(reach.bottom, rect.bottom)};
    }
    return reach;
}

// Most of a frame is out of reach.
void LabelPlaces::LookAround(const OrnMinRenderRect &reach, const Request &request) {
    const OrnMinRenderRect seen = Common(reach, frame);
    const OrnMinRenderRect ownBox = Common(request.around, frame);
    near.clear();
    for (const OrnMinRenderRect &label : labels)
        if (CommonArea(seen, label) > 0)
            near.push_back({label, kCostOfLabels});
    for (const OrnMinRenderRect &box : boxes)
        if (CommonArea(seen, box) > 0)
            near.push_back({box, IsSame(box, ownBox) ? kCostOfOwnBox : kCostOfBoxes});
}

// What comes to the limit is too much already, and not counted to its end.
int64_t LabelPlaces::Covered(const OrnMinRenderRect &rect, int64_t limit) const {
    const OrnMinRenderRect seen = Common(rect, frame);
    int64_t cost = 0;
    for (auto other = near.begin(); cost < limit && other != near.end(); ++other)
        cost += other->costOfPixel * CommonArea(seen, other->rect);
    return cost;
}

size_t LabelPlaces::PlaceBefore(const Request &request) const {
    const auto kept = std::find_if(before.begin(), before.end(), [&request](const Kept &k) {
        return k.id == request.id && k.line == request.line && k.id >= 0;
    });
    return kept == before.end() ? 0 : kept->place;
}

OrnMinRenderRect LabelPlaces::Choose(const Request &request) {
    if (labels.size() == kMaxRects)
        return request.asked;
    const OrnMinRenderRect asked = Common(request.asked, frame);
    const int64_t pixels = CommonArea(asked, asked);
    const size_t usual = PlaceBefore(request);
    LookAround(At(request, usual), request);
    int64_t least = Covered(At(request, usual), std::numeric_limits<int64_t>::max());
    size_t best = usual;
    if (least > kCostOfMoving * pixels)
        LookAround(ReachOf(request), request);
    for (size_t place = 0; place < kPlaceCount; ++place) {
        const int64_t penalty =
            kCostOfMoving * pixels + static_cast<int64_t>(place) * pixels / kStepsPerPixel;
        if (penalty >= least)
            break;
        const int64_t cost = penalty + Covered(At(request, place), least - penalty);
        if (place != usual && cost < least) {
            least = cost;
            best = place;
        }
    }
    now.push_back({request.line, request.id, best});
    return At(request, best);
}

} // namespace overlay
