// SPDX-License-Identifier: MIT
// The library itself, through its public header and shared object as any user meets it.
#include "fonts.h"
#include "jobs.h"
#include "orn_min_render.h"

#include <memory>

namespace bench {

namespace {

OrnMinRenderContext *Context() {
    static const std::unique_ptr<OrnMinRenderContext, decltype(&OrnMinRenderDestroyContext)>
        context(OrnMinRenderCreateContext(), OrnMinRenderDestroyContext);
    return context.get();
}

OrnMinRenderImage ImageOf(const Frame &frame) {
    OrnMinRenderImage image = {};
    image.width = frame.width;
    image.height = frame.height;
    image.stride = frame.stride;
    image.yPlane = frame.luma;
    image.uvPlane = frame.chroma;
    return image;
}

// What every painter below captures.
struct Setting {
    OrnMinRenderContext *context;
    OrnMinRenderImage image;
    OrnMinRenderColour ink;
    bool chroma;
    int width;
    int height;

    OrnMinRenderRect Box(int x, int y) const {
        return {x, y, x + width, y + height};
    }
};

Painter PaintRectangle(const Setting &s) {
    return AtEveryPlace([s](int x, int y) {
        const OrnMinRenderRect box = s.Box(x, y);
        if (s.chroma)
            OrnMinRenderFillRectYUV420SP(s.context, &s.image, &box, s.ink);
        else
            OrnMinRenderFillRectY8(s.context, &s.image, &box, s.ink.y);
    });
}

Painter PaintFrame(const Setting &s) {
    return AtEveryPlace([s](int x, int y) {
        const OrnMinRenderRect box = s.Box(x, y);
        if (s.chroma)
            OrnMinRenderDrawFrameYUV420SP(s.context, &s.image, &box, s.ink, OrnMinRenderLineSolid);
        else
            OrnMinRenderDrawFrameY8(s.context, &s.image, &box, s.ink.y, OrnMinRenderLineSolid);
    });
}

Painter PaintHLine(const Setting &s, int style) {
    return AtEveryPlace([s, style](int x, int y) {
        if (s.chroma)
            OrnMinRenderDrawHLineYUV420SP(s.context, &s.image, x, x + s.width, y, s.ink, style);
        else
            OrnMinRenderDrawHLineY8(s.context, &s.image, x, x + s.width, y, s.ink.y, style);
    });
}

Painter PaintVLine(const Setting &s, int style) {
    return AtEveryPlace([s, style](int x, int y) {
        if (s.chroma)
            OrnMinRenderDrawVLineYUV420SP(s.context, &s.image, x, y, y + s.height, s.ink, style);
        else
            OrnMinRenderDrawVLineY8(s.context, &s.image, x, y, y + s.height, s.ink.y, style);
    });
}

Painter PaintSlope(const Setting &s, int style) {
    return AtEveryPlace([s, style](int x, int y) {
        const OrnMinRenderPoint end = {x + s.width - 1, y + s.height - 1};
        if (s.chroma)
            OrnMinRenderDrawLineYUV420SP(s.context, &s.image, {x, y}, end, s.ink, style);
        else
            OrnMinRenderDrawLineY8(s.context, &s.image, {x, y}, end, s.ink.y, style);
    });
}

Painter PaintLine(const Setting &s, int style) {
    return s.height == 0  ? PaintHLine(s, style)
           : s.width == 0 ? PaintVLine(s, style)
                          : PaintSlope(s, style);
}

// Without a chroma plane the calls for both planes draw luma alone.
Painter PaintRoundShape(const Setting &s, const Job &job) {
    const int radius = CornerRadius(job);
    const OrnMinRenderPoint radii = {radius, radius};
    const auto call = job.shape == Shape::Ellipse ? OrnMinRenderDrawEllipseYUV420SP
                                                  : OrnMinRenderFillEllipseYUV420SP;
    const auto roundCall = job.shape == Shape::RoundRect ? OrnMinRenderDrawRoundRectYUV420SP
                                                         : OrnMinRenderFillRoundRectYUV420SP;
    if (job.shape == Shape::Ellipse || job.shape == Shape::FilledEllipse)
        return AtEveryPlace([s, call](int x, int y) {
            const OrnMinRenderRect box = s.Box(x, y);
            call(s.context, &s.image, &box, s.ink);
        });
    return AtEveryPlace([s, radii, roundCall](int x, int y) {
        const OrnMinRenderRect box = s.Box(x, y);
        roundCall(s.context, &s.image, &box, &radii, s.ink);
    });
}

Painter PaintPolygon(const Setting &s, const std::vector<Point> &polygon) {
    return AtEveryPlace([s, polygon, moved = std::vector<OrnMinRenderPoint>(polygon.size())](
                            int x, int y) mutable {
        for (size_t i = 0; i < polygon.size(); ++i)
            moved[i] = {x + polygon[i].x, y + polygon[i].y};
        if (s.chroma)
            OrnMinRenderFillPolygonYUV420SP(s.context, &s.image, moved.data(), moved.size(), s.ink);
        else
            OrnMinRenderFillPolygonY8(s.context, &s.image, moved.data(), moved.size(), s.ink.y);
    });
}

std::vector<uint32_t> BitmapWords() {
    std::vector<uint32_t> words;
    for (int row = 0; row < kBitmapSide; ++row)
        for (int first = 0; first < kBitmapSide; first += 32) {
            uint32_t word = 0;
            for (int i = 0; i < 32; ++i)
                word = word << 1 | uint32_t(BitmapBit(first + i, row));
            words.push_back(word);
        }
    return words;
}

Painter PaintBitmap(const Setting &s, bool half) {
    return AtEveryPlace([s, half, words = BitmapWords()](int x, int y) {
        const OrnMinRenderRect box = s.Box(x, y);
        const int side = kBitmapSide;
        if (half)
            OrnMinRenderDrawBitmapSemiTransparentYUV420SP(&s.image, &box, side, side, words.data(),
                                                          s.ink);
        else if (s.chroma)
            OrnMinRenderDrawBitmapYUV420SP(&s.image, &box, side, side, words.data(), s.ink);
        else
            OrnMinRenderDrawBitmapY8(&s.image, &box, side, side, words.data(), s.ink.y);
    });
}

Painter PaintBlit(const Setting &s, const Frame &source) {
    const OrnMinRenderImage from = ImageOf(source);
    return AtEveryPlace([s, from](int x, int y) {
        OrnMinRenderBltYUV420SP(&s.image, s.Box(x, y), &from, {0, 0});
    });
}

Painter PaintText(const Setting &s, const Job &job) {
    const std::shared_ptr<OrnMinRenderFont> font(
        OrnMinRenderLoadCbfFont(FontOfSize(job.fontSize).cbfPath.c_str()), OrnMinRenderDestroyFont);
    const int drop = PenHeight(job.fontSize);
    if (job.shape == Shape::Measuring)
        return AtEveryPlace([s, font, text = job.text, drop](int x, int y) {
            OrnMinRenderPoint pen = {x, y + drop};
            OrnMinRenderRect rect;
            OrnMinRenderGetTextRect(s.context, font.get(), text.c_str(), &pen, x, &rect);
        });
    if (job.shape == Shape::Text)
        return AtEveryPlace([s, font, text = job.text, drop](int x, int y) {
            OrnMinRenderPoint pen = {x, y + drop};
            OrnMinRenderDrawTextY8(s.context, &s.image, font.get(), text.c_str(), &pen, x, s.ink.y);
        });
    return AtEveryPlace([s, font, text = job.text, drop, band = job.outline](int x, int y) {
        OrnMinRenderPoint pen = {x, y + drop};
        OrnMinRenderDrawOutlineTextY8(s.context, &s.image, font.get(), text.c_str(), &pen, x, band,
                                      s.ink.y);
    });
}

Painter PaintColdFont(const Setting &s, const Job &job) {
    const int drop = PenHeight(job.fontSize);
    return AtEveryPlace(
        [s, text = job.text, drop, path = FontOfSize(job.fontSize).cbfPath](int x, int y) {
            OrnMinRenderFont *font = OrnMinRenderLoadCbfFont(path.c_str());
            OrnMinRenderPoint pen = {x, y + drop};
            OrnMinRenderDrawTextY8(s.context, &s.image, font, text.c_str(), &pen, x, s.ink.y);
            OrnMinRenderDestroyFont(font);
        });
}

} // namespace

Painter MakeLibrary(const Job &job, const Frame &frame) {
    const Setting setting = {
        Context(), ImageOf(frame), {job.ink.y, job.ink.u, job.ink.v}, frame.chroma != nullptr,
        job.width, job.height};
    switch (job.shape) {
    case Shape::Rectangle:
        return PaintRectangle(setting);
    case Shape::Frame:
        return PaintFrame(setting);
    case Shape::Line:
        return PaintLine(setting, OrnMinRenderLineSolid);
    case Shape::DashedLine:
        return PaintLine(setting, OrnMinRenderLineDashed);
    case Shape::Ellipse:
    case Shape::FilledEllipse:
    case Shape::RoundRect:
    case Shape::FilledRoundRect:
        return PaintRoundShape(setting, job);
    case Shape::Polygon:
        return PaintPolygon(setting, job.polygon);
    case Shape::Bitmap:
    case Shape::HalfBitmap:
        return PaintBitmap(setting, job.shape == Shape::HalfBitmap);
    case Shape::Blit:
        return PaintBlit(setting, BlitSource(frame));
    case Shape::Text:
    case Shape::OutlinedText:
    case Shape::Measuring:
        return PaintText(setting, job);
    case Shape::ColdFont:
        return PaintColdFont(setting, job);
    case Shape::Overlay:
        return MakeOverlay(frame, MakeLibrary, MakeLibrary);
    }
    return {};
}

} // namespace bench
