// SPDX-License-Identifier: MIT
// What a user would write by hand: straightforward loops without clipping, compiled with -O2. They
// paint what the library paints, curves up to the rounding of their own formula.
#include "fonts.h"
#include "jobs.h"

#include <cmath>
#include <cstring>
#include <memory>

namespace bench {

namespace {

uint8_t *LumaRow(const Frame &frame, int y) {
    return frame.luma + y * frame.stride;
}

uint8_t *ChromaRow(const Frame &frame, int cy) {
    return frame.chroma + cy * frame.stride;
}

void SetChroma(const Frame &frame, int cx, int cy, Colour ink) {
    uint8_t *sample = ChromaRow(frame, cy) + 2 * cx;
    sample[0] = ink.u;
    sample[1] = ink.v;
}

// ---- Rectangles and lines ----

void FillLuma(const Frame &frame, int left, int top, int right, int bottom, uint8_t luma) {
    for (int y = top; y < bottom; ++y) {
        uint8_t *row = LumaRow(frame, y);
        for (int x = left; x < right; ++x)
            row[x] = luma;
    }
}

void FillChroma(const Frame &frame, int left, int top, int right, int bottom, Colour ink) {
    if (!frame.chroma)
        return;
    for (int cy = top; cy < bottom; ++cy) {
        uint8_t *row = ChromaRow(frame, cy);
        for (int cx = left; cx < right; ++cx) {
            row[2 * cx] = ink.u;
            row[2 * cx + 1] = ink.v;
        }
    }
}

void Fill(const Frame &frame, int left, int top, int right, int bottom, Colour ink) {
    FillLuma(frame, left, top, right, bottom, ink.y);
    FillChroma(frame, left / 2, top / 2, (right + 1) / 2, (bottom + 1) / 2, ink);
}

void HLine(const Frame &frame, int x0, int x1, int y, Colour ink) {
    FillLuma(frame, x0, y, x1, y + 2, ink.y);
    FillChroma(frame, x0 / 2, y / 2, x1 / 2, y / 2 + 1, ink);
}

void VLine(const Frame &frame, int x, int y0, int y1, Colour ink) {
    FillLuma(frame, x, y0, x + 2, y1, ink.y);
    FillChroma(frame, x / 2, y0 / 2, x / 2 + 1, y1 / 2, ink);
}

void DashedHLine(const Frame &frame, int x0, int x1, int y, Colour ink) {
    const int rows = frame.chroma ? 2 : 1; // as the library has it
    for (int i = 0; i < rows; ++i)
        for (int x = x0; x < x1; ++x)
            if (x & 8)
                LumaRow(frame, y + i)[x] = ink.y;
    for (int cx = x0 / 2; frame.chroma && cx < x1 / 2; ++cx)
        if (cx & 4)
            SetChroma(frame, cx, y / 2, ink);
}

void DashedVLine(const Frame &frame, int x, int y0, int y1, Colour ink) {
    for (int y = y0; y < y1; ++y)
        if (y & 8) {
            LumaRow(frame, y)[x] = ink.y;
            LumaRow(frame, y)[x + 1] = ink.y;
        }
    for (int cy = y0 / 2; frame.chroma && cy < y1 / 2; ++cy)
        if (cy & 4)
            SetChroma(frame, x / 2, cy, ink);
}

// Bresenham's algorithm for a line to the lower right; plot(x, y, steep) draws its pixels.
template <class Plot> void Bresenham(int x, int y, int width, int height, Plot plot) {
    const bool steep = height > width;
    const int length = steep ? height : width;
    const int rise = steep ? width : height;
    int error = length / 2;
    for (int i = 0; i <= length; ++i) {
        plot(x, y, steep);
        error -= rise;
        const bool step = error < 0;
        if (step)
            error += length;
        x += !steep || step;
        y += steep || step;
    }
}

void Slope(const Frame &frame, int x0, int y0, int width, int height, Colour ink, bool dashed) {
    Bresenham(x0, y0, width, height, [&](int x, int y, bool steep) {
        if (dashed && !((steep ? y : x) & 8))
            return;
        LumaRow(frame, y)[x] = ink.y;
        LumaRow(frame, steep ? y : y + 1)[steep ? x + 1 : x] = ink.y;
    });
    if (!frame.chroma)
        return;
    Bresenham(x0 / 2, y0 / 2, width / 2, height / 2, [&](int cx, int cy, bool steep) {
        if (!dashed || (steep ? cy : cx) & 4)
            SetChroma(frame, cx, cy, ink);
    });
}

Painter PaintLine(const Frame &frame, const Job &job, bool dashed) {
    const int w = job.width;
    const int h = job.height;
    const Colour ink = job.ink;
    if (h == 0)
        return AtEveryPlace([=](int x, int y) {
            dashed ? DashedHLine(frame, x, x + w, y, ink) : HLine(frame, x, x + w, y, ink);
        });
    if (w == 0)
        return AtEveryPlace([=](int x, int y) {
            dashed ? DashedVLine(frame, x, y, y + h, ink) : VLine(frame, x, y, y + h, ink);
        });
    return AtEveryPlace([=](int x, int y) { Slope(frame, x, y, w - 1, h - 1, ink, dashed); });
}

void DrawFrame(const Frame &frame, int x, int y, int width, int height, Colour ink) {
    HLine(frame, x, x + width, y, ink);
    HLine(frame, x, x + width, y + height - 1, ink);
    VLine(frame, x, y, y + height + 1, ink);
    VLine(frame, x + width - 1, y, y + height + 1, ink);
}

// ---- Round shapes ----

void PlotBlock(const Frame &frame, int x, int y, Colour ink) {
    for (int i = 0; i < 2; ++i) {
        LumaRow(frame, y + i)[x] = ink.y;
        LumaRow(frame, y + i)[x + 1] = ink.y;
    }
    if (frame.chroma)
        SetChroma(frame, x / 2, y / 2, ink);
}

struct Ring {
    int left; // the centres of the corners
    int right;
    int top;
    int bottom;
};

// The midpoint algorithm, with the four quadrants apart from each other by the ring's sides.
void DrawRing(const Frame &frame, const Ring &ring, int64_t rx, int64_t ry, Colour ink) {
    const auto plot = [&](int64_t dx, int64_t dy) {
        PlotBlock(frame, ring.left - int(dx), ring.top - int(dy), ink);
        PlotBlock(frame, ring.right + int(dx), ring.top - int(dy), ink);
        PlotBlock(frame, ring.left - int(dx), ring.bottom + int(dy), ink);
        PlotBlock(frame, ring.right + int(dx), ring.bottom + int(dy), ink);
    };
    const int64_t rx2 = rx * rx;
    const int64_t ry2 = ry * ry;
    int64_t x = 0;
    int64_t y = ry;
    int64_t error = 4 * ry2 - 4 * rx2 * ry + rx2;
    for (; ry2 * x < rx2 * y; ++x) {
        plot(x, y);
        if (error >= 0)
            error -= 8 * rx2 * --y;
        error += 4 * ry2 * (2 * x + 3);
    }
    error = ry2 * (2 * x + 1) * (2 * x + 1) + 4 * rx2 * (y - 1) * (y - 1) - 4 * rx2 * ry2;
    for (; y >= 0; --y) {
        plot(x, y);
        if (error < 0)
            error += 8 * ry2 * ++x;
        error += 4 * rx2 * (3 - 2 * y);
    }
}

void FillSpan(const Frame &frame, int left, int right, int y, Colour ink) {
    memset(LumaRow(frame, y) + left, ink.y, size_t(right - left));
    if (y % 2 == 0)
        FillChroma(frame, (left + 1) / 2, y / 2, right / 2, y / 2 + 1, ink);
}

// A rectangle whose corners are quarters of an ellipse.
void FillRounded(const Frame &frame, int x, int y, int width, int height, int rx, int ry,
                 Colour ink) {
    for (int row = 0; row < height; ++row) {
        const int intoCorner = std::max(ry - row, row - (height - ry));
        const double share = intoCorner > 0 ? double(intoCorner) / ry : 0;
        const int inset = rx - int(std::lround(rx * std::sqrt(1 - share * share)));
        FillSpan(frame, x + inset, x + width - inset, y + row, ink);
    }
}

Painter PaintRoundShape(const Frame &frame, const Job &job) {
    const bool round = job.shape == Shape::RoundRect || job.shape == Shape::FilledRoundRect;
    const int w = job.width;
    const int h = job.height;
    const int rx = round ? CornerRadius(job) : w / 2;
    const int ry = round ? CornerRadius(job) : h / 2;
    const Colour ink = job.ink;
    if (job.shape == Shape::FilledEllipse || job.shape == Shape::FilledRoundRect)
        return AtEveryPlace([=](int x, int y) { FillRounded(frame, x, y, w, h, rx, ry, ink); });
    return AtEveryPlace([=](int x, int y) {
        DrawRing(frame, {x + rx, x + w - rx, y + ry, y + h - ry}, rx, ry, ink);
        HLine(frame, x + rx, x + w - rx, y, ink);
        HLine(frame, x + rx, x + w - rx, y + h, ink);
        VLine(frame, x, y + ry, y + h - ry, ink);
        VLine(frame, x + w, y + ry, y + h - ry, ink);
    });
}

// ---- Polygons ----

// The columns where the outline crosses the middle of a row.
void FindCrossings(const std::vector<Point> &polygon, int row, std::vector<int> *crossings) {
    crossings->clear();
    for (size_t i = 0; i < polygon.size(); ++i) {
        const Point a = polygon[i];
        const Point b = polygon[(i + 1) % polygon.size()];
        if ((a.y <= row) != (b.y <= row))
            crossings->push_back(a.x + (b.x - a.x) * (row - a.y) / (b.y - a.y));
    }
    std::sort(crossings->begin(), crossings->end());
}

template <class FillRow>
void ScanPolygon(const std::vector<Point> &polygon, std::vector<int> *crossings, FillRow fillRow) {
    const auto byRow = [](Point a, Point b) { return a.y < b.y; };
    const int last = std::max_element(polygon.begin(), polygon.end(), byRow)->y;
    for (int row = std::min_element(polygon.begin(), polygon.end(), byRow)->y; row < last; ++row) {
        FindCrossings(polygon, row, crossings);
        for (size_t i = 0; i + 1 < crossings->size(); i += 2)
            fillRow((*crossings)[i], (*crossings)[i + 1], row);
    }
}

Painter PaintPolygon(const Frame &frame, const Job &job) {
    return AtEveryPlace([frame, polygon = job.polygon, ink = job.ink, moved = job.polygon,
                         crossings = std::vector<int>()](int x, int y) mutable {
        for (size_t i = 0; i < polygon.size(); ++i)
            moved[i] = {x + polygon[i].x, y + polygon[i].y};
        ScanPolygon(moved, &crossings, [&](int left, int right, int row) {
            FillLuma(frame, left, row, right, row + 1, ink.y);
        });
        if (!frame.chroma)
            return;
        for (Point &point : moved)
            point = {point.x / 2, point.y / 2};
        ScanPolygon(moved, &crossings, [&](int left, int right, int row) {
            FillChroma(frame, left, row, right, row + 1, ink);
        });
    });
}

// ---- Pictures ----

// One byte for each pixel of the bitmap: the form that is easiest to use.
std::vector<uint8_t> BitmapBytes() {
    std::vector<uint8_t> bytes;
    for (int row = 0; row < kBitmapSide; ++row)
        for (int column = 0; column < kBitmapSide; ++column)
            bytes.push_back(BitmapBit(column, row));
    return bytes;
}

template <class Set>
void Sample(const std::vector<uint8_t> &bitmap, int width, int height, Set set) {
    for (int j = 0; j < height; ++j)
        for (int i = 0; i < width; ++i) {
            const int row = j * kBitmapSide / height;
            const int column = i * kBitmapSide / width;
            if (bitmap[size_t(row * kBitmapSide + column)])
                set(i, j);
        }
}

uint8_t Mix(uint8_t a, uint8_t b) {
    return uint8_t((a + b) / 2);
}

Painter PaintBitmap(const Frame &frame, const Job &job) {
    const bool half = job.shape == Shape::HalfBitmap;
    return AtEveryPlace(
        [=, ink = job.ink, w = job.width, h = job.height, bitmap = BitmapBytes()](int x, int y) {
            Sample(bitmap, w, h, [&](int i, int j) {
                uint8_t *pixel = LumaRow(frame, y + j) + x + i;
                *pixel = half ? Mix(*pixel, ink.y) : ink.y;
            });
            if (!frame.chroma)
                return;
            Sample(bitmap, w / 2, h / 2, [&](int i, int j) {
                uint8_t *sample = ChromaRow(frame, y / 2 + j) + x + 2 * i;
                sample[0] = half ? Mix(sample[0], ink.u) : ink.u;
                sample[1] = half ? Mix(sample[1], ink.v) : ink.v;
            });
        });
}

void CopyBlock(uint8_t *to, const uint8_t *from, ptrdiff_t stride, int width, int height) {
    for (int row = 0; row < height; ++row)
        memcpy(to + row * stride, from + row * stride, size_t(width));
}

Painter PaintBlit(const Frame &frame, const Frame &source, const Job &job) {
    return AtEveryPlace([=, w = job.width, h = job.height](int x, int y) {
        CopyBlock(LumaRow(frame, y) + x, source.luma, frame.stride, w, h);
        if (frame.chroma)
            CopyBlock(ChromaRow(frame, y / 2) + x, source.chroma, frame.stride, w, h / 2);
    });
}

// ---- Text: glyph pictures of one byte for each pixel, made beforehand ----

void Stamp(const Frame &frame, const StampGlyph &glyph, int x, int y, GlyphPixel which,
           uint8_t luma) {
    for (int j = 0; j < glyph.height; ++j) {
        uint8_t *row = LumaRow(frame, y + glyph.top + j) + x + glyph.left;
        const uint8_t *pixels = glyph.pixels.data() + j * glyph.width;
        for (int i = 0; i < glyph.width; ++i)
            if (pixels[i] == which)
                row[i] = luma;
    }
}

void StampText(const Frame &frame, const FontSet &font, const std::string &text, int x, int y,
               GlyphPixel which, uint8_t luma) {
    for (const char c : text) {
        const StampGlyph &glyph = font.glyphs[size_t(c)];
        Stamp(frame, glyph, x, y, which, luma);
        x += glyph.advance;
    }
}

struct Box {
    int left;
    int top;
    int right;
    int bottom;
};

Box Measure(const FontSet &font, const std::string &text, int x, int y) {
    Box box = {x, y, x, y};
    for (const char c : text) {
        const StampGlyph &glyph = font.glyphs[size_t(c)];
        box.left = std::min(box.left, x + glyph.inkLeft);
        box.top = std::min(box.top, y + glyph.inkTop);
        box.right = std::max(box.right, x + glyph.inkRight);
        box.bottom = std::max(box.bottom, y + glyph.inkBottom);
        x += glyph.advance;
    }
    return box;
}

Painter PaintText(const Frame &frame, const Job &job) {
    const FontSet *font = &FontOfSize(job.fontSize);
    const int drop = PenHeight(job.fontSize);
    if (job.shape == Shape::Measuring)
        return AtEveryPlace([=, text = job.text](int x, int y) {
            const Box box = Measure(*font, text, x, y + drop);
            asm volatile("" : : "m"(box)); // the result is wanted
        });
    const bool outlined = job.shape == Shape::OutlinedText;
    return AtEveryPlace([=, text = job.text, ink = job.ink.y, band = job.outline](int x, int y) {
        if (outlined)
            StampText(frame, *font, text, x, y + drop, kBand, band);
        StampText(frame, *font, text, x, y + drop, kInk, ink);
    });
}

} // namespace

Painter MakePlain(const Job &job, const Frame &frame) {
    switch (job.shape) {
    case Shape::Rectangle:
        return AtEveryPlace([frame, job](int x, int y) {
            Fill(frame, x, y, x + job.width, y + job.height, job.ink);
        });
    case Shape::Frame:
        return AtEveryPlace(
            [frame, job](int x, int y) { DrawFrame(frame, x, y, job.width, job.height, job.ink); });
    case Shape::Line:
    case Shape::DashedLine:
        return PaintLine(frame, job, job.shape == Shape::DashedLine);
    case Shape::Ellipse:
    case Shape::FilledEllipse:
    case Shape::RoundRect:
    case Shape::FilledRoundRect:
        return PaintRoundShape(frame, job);
    case Shape::Polygon:
        return PaintPolygon(frame, job);
    case Shape::Bitmap:
    case Shape::HalfBitmap:
        return PaintBitmap(frame, job);
    case Shape::Blit:
        return PaintBlit(frame, BlitSource(frame), job);
    case Shape::Text:
    case Shape::OutlinedText:
    case Shape::Measuring:
        return PaintText(frame, job);
    case Shape::Overlay:
        return MakeOverlay(frame, MakePlain, MakePlain);
    case Shape::ColdFont:
        break; // nobody decodes fonts by hand
    }
    return {};
}

} // namespace bench
