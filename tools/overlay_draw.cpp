// Commands of the script as calls of the library. Where a shape has a call for frames with a chroma
// plane and one for frames without, the frame decides; the others leave out a missing plane by
// themselves. Text is luma in both.
#include "overlay_draw.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace {

// From the edge of a label to its text: the outline reaches 3 pixels beyond the measured text, and
// as much again stays free.
constexpr int32_t kLabelMargin = 6;

bool HasChroma(const Canvas &canvas) {
    return canvas.image.uvPlane != nullptr;
}

OrnMinRenderRect Corners(const Overlay &overlay) {
    const auto &c = overlay.coordinates;
    return {c[0], c[1], c[2], c[3]};
}

void FillRect(const Canvas &canvas, const OrnMinRenderRect &rect, OrnMinRenderColour colour) {
    if (HasChroma(canvas))
        OrnMinRenderFillRectYUV420SP(canvas.context, &canvas.image, &rect, colour);
    else
        OrnMinRenderFillRectY8(canvas.context, &canvas.image, &rect, colour.y);
}

void DrawSegment(const Canvas &canvas, const Overlay &overlay, OrnMinRenderPoint from,
                 OrnMinRenderPoint to) {
    const OrnMinRenderColour colour = overlay.colours[0];
    if (HasChroma(canvas))
        OrnMinRenderDrawLineYUV420SP(canvas.context, &canvas.image, from, to, colour,
                                     overlay.style);
    else
        OrnMinRenderDrawLineY8(canvas.context, &canvas.image, from, to, colour.y, overlay.style);
}

// Hours may grow past two digits; tenths are cut, as on a clock.
std::string ClockTime(const Canvas &canvas) {
    const double frame = static_cast<double>(canvas.frameNumber);
    const auto tenths = static_cast<int64_t>(frame * 10 / canvas.framesPerSecond);
    char text[64];
    std::snprintf(text, sizeof text, "%02" PRId64 ":%02" PRId64 ":%02" PRId64 ".%" PRId64,
                  tenths / 36000, tenths / 600 % 60, tenths / 10 % 60, tenths % 10);
    return text;
}

void ReplaceAll(std::string &text, std::string_view placeholder, const std::string &value) {
    for (size_t at = text.find(placeholder); at != std::string::npos;
         at = text.find(placeholder, at + value.size()))
        text.replace(at, placeholder.size(), value);
}

// The text as this frame shows it. The result lives as long as the overlay and expanded do.
const char *TextOf(const Canvas &canvas, const Overlay &overlay, std::string &expanded) {
    if (!overlay.hasPlaceholders)
        return overlay.text.c_str();
    expanded = overlay.text;
    ReplaceAll(expanded, kFramePlaceholder, std::to_string(canvas.frameNumber));
    ReplaceAll(expanded, kTimePlaceholder, ClockTime(canvas));
    return expanded.c_str();
}

// The rectangle of a text whose pen starts at (0, 0).
OrnMinRenderRect Measure(const Canvas &canvas, const char *text) {
    OrnMinRenderPoint pen{0, 0};
    OrnMinRenderRect rect{};
    OrnMinRenderGetTextRect(canvas.context, canvas.font, text, &pen, 0, &rect);
    return rect;
}

// The start nearest to the wanted one that keeps a length inside 0..available; what is too long
// starts at 0.
int32_t KeptInside(int32_t wanted, int64_t length, int32_t available) {
    const int64_t latest = std::max<int64_t>(available - length, 0);
    return static_cast<int32_t>(std::clamp<int64_t>(wanted, 0, latest));
}

// An end past the picture is of no interest, so the sum is cut there.
int32_t EndInside(int32_t start, int64_t length, int32_t available) {
    return static_cast<int32_t>(std::min<int64_t>(start + length, available));
}

OrnMinRenderRect LabelRect(const Canvas &canvas, const Overlay &overlay,
                           const OrnMinRenderRect &text) {
    const OrnMinRenderImage &image = canvas.image;
    const int64_t width = int64_t{text.right} - text.left + 2 * kLabelMargin;
    const int64_t height = int64_t{text.bottom} - text.top + 2 * kLabelMargin;
    const int32_t left = KeptInside(overlay.coordinates[0], width, image.width);
    const int32_t top = KeptInside(overlay.coordinates[1], height, image.height);
    return {left, top, EndInside(left, width, image.width), EndInside(top, height, image.height)};
}

void DrawOutlinedText(const Canvas &canvas, const Overlay &overlay, const char *text,
                      OrnMinRenderPoint pen) {
    OrnMinRenderDrawOutlineTextY8(canvas.context, &canvas.image, canvas.font, text, &pen, pen.x,
                                  overlay.colours[1].y, overlay.colours[0].y);
}

// The background gives the text its chroma; an outline in the background's luma keeps neighbouring
// glyphs apart.
void DrawTextOnBackground(const Canvas &canvas, const Overlay &overlay, const char *text) {
    const OrnMinRenderRect textRect = Measure(canvas, text);
    const OrnMinRenderRect rect = LabelRect(canvas, overlay, textRect);
    FillRect(canvas, rect, overlay.colours[1]);
    DrawOutlinedText(
        canvas, overlay, text,
        {rect.left + kLabelMargin - textRect.left, rect.top + kLabelMargin - textRect.top});
}

} // namespace

void DrawBox(const Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(overlay);
    const OrnMinRenderColour colour = overlay.colours[0];
    if (HasChroma(canvas))
        OrnMinRenderDrawFrameYUV420SP(canvas.context, &canvas.image, &rect, colour, overlay.style);
    else
        OrnMinRenderDrawFrameY8(canvas.context, &canvas.image, &rect, colour.y, overlay.style);
}

void DrawFill(const Canvas &canvas, const Overlay &overlay) {
    FillRect(canvas, Corners(overlay), overlay.colours[0]);
}

void DrawHLine(const Canvas &canvas, const Overlay &overlay) {
    const auto &[x0, x1, y, unused1, unused2, unused3] = overlay.coordinates;
    const OrnMinRenderColour colour = overlay.colours[0];
    if (HasChroma(canvas))
        OrnMinRenderDrawHLineYUV420SP(canvas.context, &canvas.image, x0, x1, y, colour,
                                      overlay.style);
    else
        OrnMinRenderDrawHLineY8(canvas.context, &canvas.image, x0, x1, y, colour.y, overlay.style);
}

void DrawVLine(const Canvas &canvas, const Overlay &overlay) {
    const auto &[x, y0, y1, unused1, unused2, unused3] = overlay.coordinates;
    const OrnMinRenderColour colour = overlay.colours[0];
    if (HasChroma(canvas))
        OrnMinRenderDrawVLineYUV420SP(canvas.context, &canvas.image, x, y0, y1, colour,
                                      overlay.style);
    else
        OrnMinRenderDrawVLineY8(canvas.context, &canvas.image, x, y0, y1, colour.y, overlay.style);
}

void DrawLine(const Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect ends = Corners(overlay);
    DrawSegment(canvas, overlay, {ends.left, ends.top}, {ends.right, ends.bottom});
}

void DrawPolygon(const Canvas &canvas, const Overlay &overlay) {
    const auto &points = overlay.points;
    const OrnMinRenderColour colour = overlay.colours[0];
    if (HasChroma(canvas))
        OrnMinRenderFillPolygonYUV420SP(canvas.context, &canvas.image, points.data(), points.size(),
                                        colour);
    else
        OrnMinRenderFillPolygonY8(canvas.context, &canvas.image, points.data(), points.size(),
                                  colour.y);
}

void DrawPolyline(const Canvas &canvas, const Overlay &overlay) {
    for (size_t i = 1; i < overlay.points.size(); ++i)
        DrawSegment(canvas, overlay, overlay.points[i - 1], overlay.points[i]);
}

void DrawLoop(const Canvas &canvas, const Overlay &overlay) {
    DrawPolyline(canvas, overlay);
    DrawSegment(canvas, overlay, overlay.points.back(), overlay.points.front());
}

void DrawEllipse(const Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(overlay);
    OrnMinRenderDrawEllipseYUV420SP(canvas.context, &canvas.image, &rect, overlay.colours[0]);
}

void DrawDisc(const Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(overlay);
    OrnMinRenderFillEllipseYUV420SP(canvas.context, &canvas.image, &rect, overlay.colours[0]);
}

void DrawRoundBox(const Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(overlay);
    const OrnMinRenderPoint radii{overlay.coordinates[4], overlay.coordinates[5]};
    OrnMinRenderDrawRoundRectYUV420SP(canvas.context, &canvas.image, &rect, &radii,
                                      overlay.colours[0]);
}

void DrawRoundFill(const Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(overlay);
    const OrnMinRenderPoint radii{overlay.coordinates[4], overlay.coordinates[5]};
    OrnMinRenderFillRoundRectYUV420SP(canvas.context, &canvas.image, &rect, &radii,
                                      overlay.colours[0]);
}

void DrawBitmap(const Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(overlay);
    const Bitmap &bitmap = overlay.bitmap;
    const auto draw = overlay.halfTransparent ? OrnMinRenderDrawBitmapSemiTransparentYUV420SP
                                              : OrnMinRenderDrawBitmapYUV420SP;
    draw(&canvas.image, &rect, bitmap.width, bitmap.height, bitmap.words.data(),
         overlay.colours[0]);
}

// By way of the spare frame, since a copy within one frame may overlap itself.
void DrawCopy(const Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderImage &image = canvas.image;
    OrnMinRenderBltYUV420SP(&canvas.spare, {0, 0, image.width, image.height}, &image, {0, 0});
    OrnMinRenderBltYUV420SP(&image, Corners(overlay), &canvas.spare,
                            {overlay.coordinates[4], overlay.coordinates[5]});
}

void DrawText(const Canvas &canvas, const Overlay &overlay) {
    std::string expanded;
    const char *text = TextOf(canvas, overlay, expanded);
    OrnMinRenderPoint pen{overlay.coordinates[0], overlay.coordinates[1]};
    OrnMinRenderDrawTextY8(canvas.context, &canvas.image, canvas.font, text, &pen, pen.x,
                           overlay.colours[0].y);
}

void DrawOutlined(const Canvas &canvas, const Overlay &overlay) {
    std::string expanded;
    const char *text = TextOf(canvas, overlay, expanded);
    DrawOutlinedText(canvas, overlay, text, {overlay.coordinates[0], overlay.coordinates[1]});
}

void DrawLabel(const Canvas &canvas, const Overlay &overlay) {
    std::string expanded;
    DrawTextOnBackground(canvas, overlay, TextOf(canvas, overlay, expanded));
}

void DrawParagraph(const Canvas &canvas, const Overlay &overlay) {
    std::string expanded;
    const std::unique_ptr<char, decltype(&std::free)> fitted(
        OrnMinRenderFixTextWidth(canvas.context, canvas.font, TextOf(canvas, overlay, expanded),
                                 overlay.coordinates[2]),
        std::free);
    if (fitted)
        DrawTextOnBackground(canvas, overlay, fitted.get());
}
