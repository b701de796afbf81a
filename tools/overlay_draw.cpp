// Commands of the script as calls of the library. Where a shape has a call for frames with a chroma
// plane and one for frames without, the frame decides; the others leave out a missing plane by
// themselves. Text is luma in both.
#include "overlay_draw.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

// From the edge of a label to its text: the outline reaches 3 pixels beyond the measured text, and
// as much again stays free.
constexpr int32_t kOutlineReach = 3;
constexpr int32_t kLabelMargin = 6;

bool HasChroma(const Canvas &canvas) {
    return canvas.image.uvPlane != nullptr;
}

OrnMinRenderColour ColourFor(const Canvas &canvas, const Paint &paint) {
    if (!paint.ofId)
        return paint.colour;
    const auto count = static_cast<int64_t>(canvas.palette.size());
    const int64_t index = (canvas.box->id - 1) % count; // the first id takes the first colour
    return canvas.palette[static_cast<size_t>(index < 0 ? index + count : index)];
}

OrnMinRenderRect Corners(const Canvas &canvas) {
    const auto &c = canvas.coordinates;
    return {c[0], c[1], c[2], c[3]};
}

OrnMinRenderPoint PointAt(const Canvas &canvas, size_t i) {
    return {canvas.coordinates[i], canvas.coordinates[i + 1]};
}

std::vector<OrnMinRenderPoint> AllPoints(const Canvas &canvas) {
    std::vector<OrnMinRenderPoint> points;
    for (size_t i = 0; i + 1 < canvas.coordinates.size(); i += 2)
        points.push_back(PointAt(canvas, i));
    return points;
}

void FillRect(const Canvas &canvas, const OrnMinRenderRect &rect, OrnMinRenderColour colour) {
    if (HasChroma(canvas))
        OrnMinRenderFillRectYUV420SP(canvas.context, &canvas.image, &rect, colour);
    else
        OrnMinRenderFillRectY8(canvas.context, &canvas.image, &rect, colour.y);
}

void DrawSegment(const Canvas &canvas, const Overlay &overlay, OrnMinRenderPoint from,
                 OrnMinRenderPoint to) {
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (HasChroma(canvas))
        OrnMinRenderDrawLineYUV420SP(canvas.context, &canvas.image, from, to, colour,
                                     overlay.style);
    else
        OrnMinRenderDrawLineY8(canvas.context, &canvas.image, from, to, colour.y, overlay.style);
}

void DrawSegments(const Canvas &canvas, const Overlay &overlay,
                  const std::vector<OrnMinRenderPoint> &points) {
    for (size_t i = 1; i < points.size(); ++i)
        DrawSegment(canvas, overlay, points[i - 1], points[i]);
}

// ---- Text ----

// Hours may grow past two digits; tenths are cut, as on a clock.
std::string ClockTime(const Canvas &canvas) {
    const double frame = static_cast<double>(canvas.frameNumber);
    const auto tenths = static_cast<int64_t>(frame * 10 / canvas.framesPerSecond);
    char text[64];
    std::snprintf(text, sizeof text, "%02" PRId64 ":%02" PRId64 ":%02" PRId64 ".%" PRId64,
                  tenths / 36000, tenths / 600 % 60, tenths / 10 % 60, tenths % 10);
    return text;
}

std::string TwoDecimals(double value) {
    char text[400]; // the largest double has 309 digits
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

void ReplaceAll(std::string &text, std::string_view placeholder, const std::string &value) {
    for (size_t at = text.find(placeholder); at != std::string::npos;
         at = text.find(placeholder, at + value.size()))
        text.replace(at, placeholder.size(), value);
}

// The text as this frame and box show it.
std::string TextOf(const Canvas &canvas, const Overlay &overlay) {
    std::string text = overlay.text;
    if (!overlay.hasPlaceholders)
        return text;
    ReplaceAll(text, kFramePlaceholder, std::to_string(canvas.frameNumber));
    ReplaceAll(text, kTimePlaceholder, ClockTime(canvas));
    if (canvas.box) {
        ReplaceAll(text, kIdPlaceholder, std::to_string(canvas.box->id));
        ReplaceAll(text, kConfidencePlaceholder, TwoDecimals(canvas.box->confidence));
    }
    return text;
}

// Where a new line starts, across the direction of writing.
int32_t LineStart(const Overlay &overlay, OrnMinRenderPoint pen) {
    const int32_t direction = overlay.textStyle.direction;
    const bool vertical =
        direction == OrnMinRenderTextDirection::Down || direction == OrnMinRenderTextDirection::Up;
    return vertical ? pen.y : pen.x;
}

// Of one axis: a text from start up to end, when its pen starts at 0.
struct Extent {
    int64_t start;
    int64_t end;
};

// Where the pen has to start so that the wanted part of the text lies at a coordinate.
int64_t PenFor(int32_t at, Edge part, const Extent &text) {
    switch (part) {
    case Edge::Start:
        return at - text.start;
    case Edge::Middle:
        return at - (text.start + text.end) / 2;
    case Edge::End:
        return at - text.end;
    default:
        return at;
    }
}

// The pen start nearest to the wanted one that keeps the text inside 0..size; a text that is too
// long starts at 0.
int64_t PenInside(int64_t pen, const Extent &text, int32_t size) {
    const int64_t latest = std::max<int64_t>(size - (text.end - text.start), 0);
    return std::clamp<int64_t>(pen + text.start, 0, latest) - text.start;
}

// What is asked for, or else the edge of the frame that the place names.
Edge PartAt(const std::optional<Edge> &asked, const Place &place, Edge otherwise) {
    const bool named =
        place.edge == Edge::Middle || (place.edge != Edge::Origin && place.source == Source::Frame);
    return asked.value_or(named ? place.edge : otherwise);
}

struct PlacedText {
    OrnMinRenderPoint pen;
    OrnMinRenderRect rect; // with the margin around the text
};

// Puts a text and its margin where the overlay wants them. The reach lies within the frame, too.
PlacedText PlaceText(Canvas &canvas, const Overlay &overlay, const char *text, int32_t margin,
                     int32_t reach, Edge otherwise) {
    OrnMinRenderPoint end{0, 0};
    OrnMinRenderRect r{};
    OrnMinRenderGetTextRect(canvas.context, overlay.font.get(), text, &end, 0, &r);
    const Extent x{int64_t{r.left} - margin, int64_t{r.right} + margin};
    const Extent y{int64_t{r.top} - margin, int64_t{r.bottom} + margin};
    const TextStyle &style = overlay.textStyle;
    int64_t penX =
        PenFor(canvas.coordinates[0], PartAt(style.horizontal, overlay.places[0], otherwise), x);
    int64_t penY =
        PenFor(canvas.coordinates[1], PartAt(style.vertical, overlay.places[1], otherwise), y);
    if (style.inside) {
        penX = PenInside(penX, {x.start - reach, x.end + reach}, canvas.image.width);
        penY = PenInside(penY, {y.start - reach, y.end + reach}, canvas.image.height);
    }
    const OrnMinRenderRect rect{Saturated(penX + x.start), Saturated(penY + y.start),
                                Saturated(penX + x.end), Saturated(penY + y.end)};
    canvas.surroundings.text = rect;
    return {{Saturated(penX), Saturated(penY)}, rect};
}

void DrawOutlinedText(const Canvas &canvas, const Overlay &overlay, const char *text,
                      OrnMinRenderPoint pen) {
    const int32_t lineStart = LineStart(overlay, pen);
    OrnMinRenderDrawOutlineTextY8(canvas.context, &canvas.image, overlay.font.get(), text, &pen,
                                  lineStart, ColourFor(canvas, overlay.paints[1]).y,
                                  ColourFor(canvas, overlay.paints[0]).y);
}

// Widened to even edges: otherwise colour would show past the luma, in a fringe of one pixel.
OrnMinRenderRect WholeSamples(const OrnMinRenderRect &rect) {
    const auto up = [](int32_t edge) { return Saturated(int64_t{edge} + (edge & 1)); };
    return {rect.left & ~1, rect.top & ~1, up(rect.right), up(rect.bottom)};
}

// The background gives the text its chroma; an outline in the background's luma keeps neighbouring
// glyphs apart. Texts of backgrounds side by side stay level, so they move along with the corner.
void DrawTextOnBackground(Canvas &canvas, const Overlay &overlay, const char *text) {
    const PlacedText placed = PlaceText(canvas, overlay, text, kLabelMargin, 0, Edge::Start);
    const OrnMinRenderRect rect = HasChroma(canvas) ? WholeSamples(placed.rect) : placed.rect;
    canvas.surroundings.text = rect;
    FillRect(canvas, rect, ColourFor(canvas, overlay.paints[1]));
    DrawOutlinedText(canvas, overlay, text,
                     {placed.pen.x - (placed.rect.left - rect.left),
                      placed.pen.y - (placed.rect.top - rect.top)});
}

// False when a place counts from what is not there.
bool ResolvePlaces(Canvas &canvas, const Overlay &overlay) {
    PlaceResolver resolver(canvas.surroundings);
    canvas.coordinates.clear();
    for (const Place &place : overlay.places) {
        const std::optional<int32_t> value = resolver.Resolve(place);
        if (!value)
            return false;
        canvas.coordinates.push_back(*value);
    }
    return true;
}

} // namespace

void BeginFrame(Canvas &canvas, int64_t frameNumber) {
    canvas.frameNumber = frameNumber;
    canvas.surroundings = {{0, 0, canvas.image.width, canvas.image.height}, {}, {}};
}

void DrawOverlay(Canvas &canvas, const Overlay &overlay) {
    if (!overlay.perBox) {
        if (ResolvePlaces(canvas, overlay))
            overlay.draw(canvas, overlay);
        return;
    }
    for (const TrackedBox &box : canvas.tracks.At(canvas.frameNumber)) {
        canvas.box = &box;
        canvas.surroundings.box = RectOf(box);
        if (ResolvePlaces(canvas, overlay))
            overlay.draw(canvas, overlay);
    }
    canvas.box = nullptr;
}

void DrawBox(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (HasChroma(canvas))
        OrnMinRenderDrawFrameYUV420SP(canvas.context, &canvas.image, &rect, colour, overlay.style);
    else
        OrnMinRenderDrawFrameY8(canvas.context, &canvas.image, &rect, colour.y, overlay.style);
}

void DrawFill(Canvas &canvas, const Overlay &overlay) {
    FillRect(canvas, Corners(canvas), ColourFor(canvas, overlay.paints[0]));
}

void DrawHLine(Canvas &canvas, const Overlay &overlay) {
    const int32_t x0 = canvas.coordinates[0];
    const int32_t x1 = canvas.coordinates[1];
    const int32_t y = canvas.coordinates[2];
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (HasChroma(canvas))
        OrnMinRenderDrawHLineYUV420SP(canvas.context, &canvas.image, x0, x1, y, colour,
                                      overlay.style);
    else
        OrnMinRenderDrawHLineY8(canvas.context, &canvas.image, x0, x1, y, colour.y, overlay.style);
}

void DrawVLine(Canvas &canvas, const Overlay &overlay) {
    const int32_t x = canvas.coordinates[0];
    const int32_t y0 = canvas.coordinates[1];
    const int32_t y1 = canvas.coordinates[2];
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (HasChroma(canvas))
        OrnMinRenderDrawVLineYUV420SP(canvas.context, &canvas.image, x, y0, y1, colour,
                                      overlay.style);
    else
        OrnMinRenderDrawVLineY8(canvas.context, &canvas.image, x, y0, y1, colour.y, overlay.style);
}

void DrawLine(Canvas &canvas, const Overlay &overlay) {
    DrawSegment(canvas, overlay, PointAt(canvas, 0), PointAt(canvas, 2));
}

void DrawPolygon(Canvas &canvas, const Overlay &overlay) {
    const std::vector<OrnMinRenderPoint> points = AllPoints(canvas);
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (HasChroma(canvas))
        OrnMinRenderFillPolygonYUV420SP(canvas.context, &canvas.image, points.data(), points.size(),
                                        colour);
    else
        OrnMinRenderFillPolygonY8(canvas.context, &canvas.image, points.data(), points.size(),
                                  colour.y);
}

void DrawPolyline(Canvas &canvas, const Overlay &overlay) {
    DrawSegments(canvas, overlay, AllPoints(canvas));
}

void DrawLoop(Canvas &canvas, const Overlay &overlay) {
    std::vector<OrnMinRenderPoint> points = AllPoints(canvas);
    points.push_back(points.front());
    DrawSegments(canvas, overlay, points);
}

void DrawEllipse(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    OrnMinRenderDrawEllipseYUV420SP(canvas.context, &canvas.image, &rect,
                                    ColourFor(canvas, overlay.paints[0]));
}

void DrawDisc(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    OrnMinRenderFillEllipseYUV420SP(canvas.context, &canvas.image, &rect,
                                    ColourFor(canvas, overlay.paints[0]));
}

void DrawRoundBox(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    const OrnMinRenderPoint radii = PointAt(canvas, 4);
    OrnMinRenderDrawRoundRectYUV420SP(canvas.context, &canvas.image, &rect, &radii,
                                      ColourFor(canvas, overlay.paints[0]));
}

void DrawRoundFill(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    const OrnMinRenderPoint radii = PointAt(canvas, 4);
    OrnMinRenderFillRoundRectYUV420SP(canvas.context, &canvas.image, &rect, &radii,
                                      ColourFor(canvas, overlay.paints[0]));
}

void DrawBitmap(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    const Bitmap &bitmap = overlay.bitmap;
    const auto draw = overlay.halfTransparent ? OrnMinRenderDrawBitmapSemiTransparentYUV420SP
                                              : OrnMinRenderDrawBitmapYUV420SP;
    draw(&canvas.image, &rect, bitmap.width, bitmap.height, bitmap.words.data(),
         ColourFor(canvas, overlay.paints[0]));
}

void DrawPicture(Canvas &canvas, const Overlay &overlay) {
    const auto &[left, top, width, height] = Corners(canvas);
    const OrnMinRenderRect rect{left, top, Saturated(int64_t{left} + width),
                                Saturated(int64_t{top} + height)};
    OrnMinRenderBltYUV420SP(&canvas.image, rect,
                            &overlay.clip->FrameAt(canvas.frameNumber - overlay.firstFrame),
                            {0, 0});
}

// By way of the spare frame, since a copy within one frame may overlap itself.
void DrawCopy(Canvas &canvas, const Overlay &) {
    if (!canvas.spare)
        canvas.spare = std::make_unique<Frame>(canvas.shape);
    const OrnMinRenderImage spare = canvas.spare->Image();
    OrnMinRenderBltYUV420SP(&spare, canvas.surroundings.frame, &canvas.image, {0, 0});
    OrnMinRenderBltYUV420SP(&canvas.image, Corners(canvas), &spare, PointAt(canvas, 4));
}

void DrawText(Canvas &canvas, const Overlay &overlay) {
    const std::string text = TextOf(canvas, overlay);
    OrnMinRenderPoint pen = PlaceText(canvas, overlay, text.c_str(), 0, 0, Edge::Origin).pen;
    const int32_t lineStart = LineStart(overlay, pen);
    OrnMinRenderDrawTextY8(canvas.context, &canvas.image, overlay.font.get(), text.c_str(), &pen,
                           lineStart, ColourFor(canvas, overlay.paints[0]).y);
}

void DrawOutlined(Canvas &canvas, const Overlay &overlay) {
    const std::string text = TextOf(canvas, overlay);
    const PlacedText placed =
        PlaceText(canvas, overlay, text.c_str(), 0, kOutlineReach, Edge::Origin);
    DrawOutlinedText(canvas, overlay, text.c_str(), placed.pen);
}

void DrawLabel(Canvas &canvas, const Overlay &overlay) {
    DrawTextOnBackground(canvas, overlay, TextOf(canvas, overlay).c_str());
}

void DrawParagraph(Canvas &canvas, const Overlay &overlay) {
    const std::string text = TextOf(canvas, overlay);
    const std::unique_ptr<char, decltype(&std::free)> fitted(
        OrnMinRenderFixTextWidth(canvas.context, overlay.font.get(), text.c_str(),
                                 canvas.coordinates[2]),
        std::free);
    if (fitted)
        DrawTextOnBackground(canvas, overlay, fitted.get());
}

void DrawMeasure(Canvas &canvas, const Overlay &overlay) {
    PlaceText(canvas, overlay, TextOf(canvas, overlay).c_str(), 0, 0, Edge::Origin);
}

void DrawTrail(Canvas &canvas, const Overlay &overlay) {
    DrawSegments(canvas, overlay, canvas.tracks.Trail(*canvas.box, canvas.coordinates[0]));
}
