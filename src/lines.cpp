// SPDX-License-Identifier: MIT
// Axis-aligned and sloped lines. Horizontal ones are runs of bytes; all others write pixel by
// pixel, after clipping.
#include "lines.h"

#include "pixop.h"

using namespace orn;

// Half-open.
struct Range {
    int32_t first;
    int32_t end;
};

static Range ClampRange(int32_t a, int32_t b, int32_t size) {
    const int32_t first = ClampToSize(a, size);
    const int32_t end = ClampToSize(b, size);
    return first < end ? Range{first, end} : Range{end, first};
}

// The chroma range of a line: both ends rounded down.
static Range HalveRange(Range luma) {
    return {luma.first / 2, luma.end / 2};
}

static bool LumaDash(int32_t position) {
    return (position & 8) != 0;
}

static bool ChromaDash(int32_t position) {
    return (position & 4) != 0;
}

// The first dash of luma that ends after the given coordinate. Dashes repeat every 16 pixels.
static int64_t FirstDash(int32_t position) {
    return (position & ~15) + 8;
}

static bool HasRow(const OrnMinRenderImage *image, int64_t y) {
    return y >= 0 && y < image->height;
}

// ---- Horizontal lines ----

// A solid line is at most two spans, all alike.
static inline void DrawSolidHLineLuma(const OrnMinRenderImage *image, Range columns, int32_t y,
                                      uint8_t luma, kernels::Set set) {
    const int64_t first = Max(y, 0);
    const int64_t end = Min(int64_t{y} + 2, image->height);
    if (image->yPlane && first < end)
        FillBlock(LumaPlane(image), columns.first, first, columns.end - columns.first, end - first,
                  LumaPattern(luma), set);
}

static inline void DrawSolidHLineChroma(const OrnMinRenderImage *image, Range columns, int32_t y,
                                        OrnMinRenderColour colour, kernels::Set set) {
    const Range samples = HalveRange(columns);
    if (image->uvPlane && HasRow(image, y))
        FillBlock(ChromaPlane(image), samples.first, y / 2, samples.end - samples.first, 1,
                  ChromaPattern(colour), set);
}

// Paints the dashes of a row over a range of its bytes. Those of chroma, every other four samples
// of two bytes, lie at the same bytes as those of luma.
static void DrawDashes(uint8_t *row, int64_t first, int64_t end, Pattern pattern) {
    int64_t dash = FirstDash(static_cast<int32_t>(first));
    if (dash < first) {
        const int64_t dashEnd = Min(dash + 8, end);
        FillRun(row + first, static_cast<ptrdiff_t>(dashEnd - first), pattern);
        dash += 16;
    }
    for (; dash + 8 <= end; dash += 16)
        StorePattern<8>(row + dash, pattern);
    if (dash < end)
        FillRun(row + dash, static_cast<ptrdiff_t>(end - dash), pattern);
}

static inline void DrawDashedRowLuma(const OrnMinRenderImage *image, Range columns, int64_t y,
                                     uint8_t luma) {
    if (image->yPlane && HasRow(image, y))
        DrawDashes(LumaAt(image, 0, y), columns.first, columns.end, LumaPattern(luma));
}

static inline void DrawDashedRowChroma(const OrnMinRenderImage *image, Range columns, int32_t y,
                                       OrnMinRenderColour colour) {
    const Range samples = HalveRange(columns);
    if (image->uvPlane && HasRow(image, y))
        DrawDashes(ChromaAt(image, 0, y / 2), kChromaBytes * samples.first,
                   kChromaBytes * samples.end, ChromaPattern(colour));
}

void OrnMinRenderDrawHLineY8(OrnMinRenderContext *, const OrnMinRenderImage *image, int32_t x0,
                             int32_t x1, int32_t y, uint8_t luma, int32_t style) {
    if (!image)
        return;
    const Range columns = ClampRange(x0, x1, image->width);
    if (style == OrnMinRenderLineSolid)
        DrawSolidHLineLuma(image, columns, y, luma, kernels::Best());
    else if (style == OrnMinRenderLineDashed)
        DrawDashedRowLuma(image, columns, y, luma); // one row, unlike every other line
}

void OrnMinRenderDrawHLineY(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                            int32_t x0, int32_t x1, int32_t y, uint8_t luma, int32_t style) {
    OrnMinRenderDrawHLineY8(context, image, x0, x1, y, luma, style);
}

void OrnMinRenderDrawHLineYUV420SP(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                   int32_t x0, int32_t x1, int32_t y, OrnMinRenderColour colour,
                                   int32_t style) {
    if (!image)
        return;
    const Range columns = ClampRange(x0, x1, image->width);
    if (style == OrnMinRenderLineSolid) {
        const kernels::Set set = kernels::Best();
        DrawSolidHLineLuma(image, columns, y, colour.y, set);
        DrawSolidHLineChroma(image, columns, y, colour, set);
    } else if (style == OrnMinRenderLineDashed) {
        DrawDashedRowLuma(image, columns, y, colour.y);
        DrawDashedRowLuma(image, columns, int64_t{y} + 1, colour.y);
        DrawDashedRowChroma(image, columns, y, colour);
    }
}

// ---- Vertical lines ----

static bool HasColumnPair(const OrnMinRenderImage *image, int32_t x) {
    return x >= 0 && int64_t{x} + 1 < image->width;
}

static bool IsLineStyle(int32_t style) {
    return style == OrnMinRenderLineSolid || style == OrnMinRenderLineDashed;
}

static inline void DrawColumnPair(const OrnMinRenderImage *image, int32_t x, int64_t first,
                                  int64_t end, uint8_t luma) {
    const auto stride = static_cast<ptrdiff_t>(image->stride);
    uint8_t *const pixels = LumaAt(image, x, first);
    for (ptrdiff_t row = 0; row < end - first; ++row)
        StoreLumaPair(pixels + row * stride, luma);
}

void OrnMinRenderDrawVLineY8(OrnMinRenderContext *, const OrnMinRenderImage *image, int32_t x,
                             int32_t y0, int32_t y1, uint8_t luma, int32_t style) {
    if (!image || !image->yPlane || !HasColumnPair(image, x) || !IsLineStyle(style))
        return;
    const int32_t first = ClampToSize(y0, image->height);
    const int32_t end = ClampToSize(y1, image->height);
    if (style == OrnMinRenderLineSolid)
        DrawColumnPair(image, x, first, end, luma);
    else
        for (int64_t dash = FirstDash(first); dash < end; dash += 16)
            DrawColumnPair(image, x, Max(dash, first), Min(dash + 8, end), luma);
}

void OrnMinRenderDrawVLineYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                   int32_t x, int32_t y0, int32_t y1, OrnMinRenderColour colour,
                                   int32_t style) {
    if (!image || !HasColumnPair(image, x) || !IsLineStyle(style))
        return;
    const Range rows = ClampRange(y0, y1, image->height);
    OrnMinRenderDrawVLineY8(context, image, x, rows.first, rows.end, colour.y, style);
    if (!image->uvPlane)
        return;
    const Plane chroma = ChromaPlane(image);
    const Range chromaRows = HalveRange(rows);
    for (int32_t cy = chromaRows.first; cy < chromaRows.end; ++cy)
        if (style == OrnMinRenderLineSolid || ChromaDash(cy))
            StoreChroma(SampleAt(chroma, x / 2, cy), colour);
}

// ---- Clipping of sloped lines ----

enum Outcode : uint32_t { kLeft = 1, kRight = 2, kTop = 4, kBottom = 8 };

static uint32_t ComputeOutcode(OrnMinRenderPoint p, int32_t xmax, int32_t ymax) {
    return (p.x < 0 ? kLeft : 0u) | (p.x > xmax ? kRight : 0u) | (p.y < 0 ? kTop : 0u) |
           (p.y > ymax ? kBottom : 0u);
}

// The coordinate v of the segment (u0, v0) - (u1, v1) where u = edge, which lies between u0 and u1.
// The quotient is cut toward zero. Magnitudes are at most 2^32 - 1, so their product fits.
static int32_t Intersect(int32_t u0, int32_t v0, int32_t u1, int32_t v1, int32_t edge) {
    const int64_t rise = int64_t{v1} - v0;
    const int64_t run = int64_t{u1} - u0;
    const int64_t part = int64_t{edge} - u0;
    const uint64_t product = static_cast<uint64_t>(rise < 0 ? -rise : rise) *
                             static_cast<uint64_t>(part < 0 ? -part : part);
    const auto magnitude =
        static_cast<int64_t>(product / static_cast<uint64_t>(run < 0 ? -run : run));
    const bool negative = (rise < 0) != ((part < 0) != (run < 0));
    return static_cast<int32_t>(v0 + (negative ? -magnitude : magnitude));
}

// Where the segment, taken from p0, meets the edge of the first bit of code.
static OrnMinRenderPoint MoveToEdge(OrnMinRenderPoint p0, OrnMinRenderPoint p1, uint32_t code,
                                    int32_t xmax, int32_t ymax) {
    if (code & (kBottom | kTop)) {
        const int32_t edge = code & kBottom ? ymax : 0;
        return {Intersect(p0.y, p0.x, p1.y, p1.x, edge), edge};
    }
    const int32_t edge = code & kRight ? xmax : 0;
    return {edge, Intersect(p0.x, p0.y, p1.x, p1.y, edge)};
}

bool orn::ClipLine(OrnMinRenderPoint *p0, OrnMinRenderPoint *p1, int32_t xmax, int32_t ymax) {
    if (xmax < 0 || ymax < 0)
        return false;
    uint32_t code0 = ComputeOutcode(*p0, xmax, ymax);
    uint32_t code1 = ComputeOutcode(*p1, xmax, ymax);
    while (code0 | code1) {
        if (code0 & code1)
            return false;
        // Each pass moves an end onto one edge, inward, so that a few passes suffice.
        if (code0) {
            *p0 = MoveToEdge(*p0, *p1, code0, xmax, ymax);
            code0 = ComputeOutcode(*p0, xmax, ymax);
        } else {
            *p1 = MoveToEdge(*p0, *p1, code1, xmax, ymax);
            code1 = ComputeOutcode(*p1, xmax, ymax);
        }
    }
    return true;
}

// ---- Sloped lines ----

// A clipped segment, the major axis being the one along which it is longer (x when equal), ordered
// along it.
struct SlopedLine {
    bool steep; // the major axis is y
    int32_t major0;
    int32_t minor0;
    int32_t major1;
    int32_t majorLength;
    int32_t minorLength; // at most majorLength
    int32_t minorStep;   // +1 or -1
};

static SlopedLine OrderAlongMajorAxis(OrnMinRenderPoint p0, OrnMinRenderPoint p1) {
    const int32_t width = p1.x < p0.x ? p0.x - p1.x : p1.x - p0.x;
    const int32_t height = p1.y < p0.y ? p0.y - p1.y : p1.y - p0.y;
    const bool steep = height > width;
    if (steep ? p1.y < p0.y : p1.x < p0.x) {
        const OrnMinRenderPoint first = p1;
        p1 = p0;
        p0 = first;
    }
    if (steep)
        return {true, p0.y, p0.x, p1.y, height, width, p1.x > p0.x ? 1 : -1};
    return {false, p0.x, p0.y, p1.x, width, height, p1.y > p0.y ? 1 : -1};
}

static bool PrepareLine(const OrnMinRenderImage *image, OrnMinRenderPoint p0, OrnMinRenderPoint p1,
                        int32_t style, SlopedLine *line) {
    // One pixel less than the frame, for the second pixel of each step.
    const int32_t xmax = Saturate(int64_t{image->width} - 2);
    const int32_t ymax = Saturate(int64_t{image->height} - 2);
    if (!IsLineStyle(style) || !ClipLine(&p0, &p1, xmax, ymax))
        return false;
    *line = OrderAlongMajorAxis(p0, p1);
    return true;
}

// How far apart the samples of neighbouring steps lie.
struct Pitches {
    ptrdiff_t major;
    ptrdiff_t minor;
};

static Pitches PitchesOf(const Plane &plane, bool steep) {
    const auto stride = static_cast<ptrdiff_t>(plane.stride);
    return steep ? Pitches{stride, plane.sampleBytes} : Pitches{plane.sampleBytes, stride};
}

static uint8_t *StartOf(const Plane &plane, bool steep, int32_t major, int32_t minor) {
    return steep ? SampleAt(plane, minor, major) : SampleAt(plane, major, minor);
}

// Bresenham's recurrence, in both planes: after i steps, m of them along the minor axis, too,
//     error = majorLength / 2 - i * minorLength + m * majorLength
// which the step along the minor axis keeps within 0..majorLength - 1. The place stays an offset:
// past the last step it may lie outside the plane.

static void DrawLineLuma(const OrnMinRenderImage *image, const SlopedLine line, uint8_t luma,
                         bool dashed) {
    const Plane plane = LumaPlane(image);
    const Pitches pitch = PitchesOf(plane, line.steep);
    uint8_t *const start = StartOf(plane, line.steep, line.major0, line.minor0);
    ptrdiff_t offset = 0;
    int32_t error = line.majorLength / 2;
    for (int32_t major = line.major0; major <= line.major1; ++major) {
        if (!dashed || LumaDash(major)) {
            start[offset] = luma;
            start[offset + pitch.minor] = luma;
        }
        offset += pitch.major;
        error -= line.minorLength;
        if (error < 0) {
            offset += line.minorStep * pitch.minor;
            error += line.majorLength;
        }
    }
}

// The chroma line starts from the halved first point with an error term of its own, so that its
// minor coordinate can leave the plane by one sample.
static void DrawLineChroma(const OrnMinRenderImage *image, const SlopedLine line,
                           OrnMinRenderColour colour, bool dashed) {
    const Plane plane = ChromaPlane(image);
    const Pitches pitch = PitchesOf(plane, line.steep);
    const int32_t minorSize = ChromaSize(line.steep ? image->width : image->height);
    const int32_t last = line.major1 / 2;
    int32_t minor = line.minor0 / 2;
    uint8_t *const start = StartOf(plane, line.steep, line.major0 / 2, minor);
    ptrdiff_t offset = 0;
    int32_t error = line.majorLength / 2;
    for (int32_t major = line.major0 / 2; major <= last; ++major) {
        if (minor >= 0 && minor < minorSize && (!dashed || ChromaDash(major)))
            StoreChroma(start + offset, colour);
        offset += pitch.major;
        error -= line.minorLength;
        if (error < 0) {
            minor += line.minorStep;
            offset += line.minorStep * pitch.minor;
            error += line.majorLength;
        }
    }
}

void OrnMinRenderDrawLineY8(OrnMinRenderContext *, const OrnMinRenderImage *image,
                            OrnMinRenderPoint p0, OrnMinRenderPoint p1, uint8_t luma,
                            int32_t style) {
    SlopedLine line;
    if (image && image->yPlane && PrepareLine(image, p0, p1, style, &line))
        DrawLineLuma(image, line, luma, style == OrnMinRenderLineDashed);
}

void OrnMinRenderDrawLineYUV420SP(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                  OrnMinRenderPoint p0, OrnMinRenderPoint p1,
                                  OrnMinRenderColour colour, int32_t style) {
    SlopedLine line;
    if (!image || !PrepareLine(image, p0, p1, style, &line))
        return;
    if (image->yPlane)
        DrawLineLuma(image, line, colour.y, style == OrnMinRenderLineDashed);
    if (image->uvPlane)
        DrawLineChroma(image, line, colour, style == OrnMinRenderLineDashed);
}
