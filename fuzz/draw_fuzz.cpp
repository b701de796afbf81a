// SPDX-License-Identifier: MIT
// Sequences of drawing calls on frames between pages without access. Each call is made on three
// frames of one size: one with both planes, twice; one of luma alone, by the call's Y8 sibling
// where it has one; one of chroma alone. They differ in stride, place and context, and must show
// the same pixels; at the end every byte that is no pixel must be as it was.
#include "fence.h"
#include "font_files.h"
#include "input.h"

#include <cstring>

namespace {

// ---- Frames ----

using Image = const OrnMinRenderImage *;

constexpr int32_t kMaxSide = 300;
constexpr uint8_t kPaper = 0x55;

struct FencedPlane {
    Fenced memory{104 * 1024}; // all of it paper before and after each input
    uint8_t *first = nullptr;  // of row 0
    int64_t stride = 0;
    int32_t rows = 0;
    int32_t bytes = 0; // of a row

    FencedPlane() {
        memset(memory.first, kPaper, size_t(memory.end - memory.first));
    }
    uint8_t *Row(int64_t y) const {
        return first + y * stride;
    }
    // One end of the rows lies at a fence.
    void Place(int32_t newRows, int32_t newBytes, int64_t newStride, bool atEnd) {
        rows = newRows > 0 && newBytes > 0 ? newRows : 0;
        bytes = newBytes;
        stride = newStride;
        const int64_t between = rows ? (rows - 1) * stride : 0;
        const int64_t reach = rows ? std::abs(between) + bytes : 0;
        first = (atEnd ? memory.end - reach : memory.first) - (between < 0 ? between : 0);
    }
    void RequirePaperAroundPixels() {
        for (int32_t y = 0; y < rows; ++y)
            memset(Row(y), kPaper, size_t(bytes));
        const auto others = size_t(memory.end - memory.first - 1);
        Require(*memory.first == kPaper && !memcmp(memory.first, memory.first + 1, others),
                "nothing outside the frame is written");
    }
    void RequireSame(const FencedPlane &other, const char *promise) const {
        for (int32_t y = 0; y < rows; ++y)
            Require(memcmp(Row(y), other.Row(y), size_t(bytes)) == 0, promise);
    }
};

struct FencedFrame {
    FencedPlane luma, chroma;
    OrnMinRenderImage image = {};

    // planes: bit 0 luma, bit 1 chroma
    void Place(Input *input, int32_t width, int32_t height, int planes) {
        const int layout = input->Byte();
        const bool hasLuma = planes & 1, hasChroma = planes & 2;
        int64_t stride = hasChroma ? (width + 1) / 2 * 2 + layout % 16 * 2 : width + layout % 16;
        if (layout & 16)
            stride = -stride;
        luma.Place(height, width, stride, layout & 32);
        chroma.Place((height + 1) / 2, (width + 1) / 2 * 2, stride, layout & 64);
        uint8_t *const yPlane = hasLuma ? luma.first : nullptr;
        image = {0, width, height, stride, yPlane, 0, hasChroma ? chroma.first : nullptr};
    }
};

int32_t ReadSide(Input *input) {
    const int32_t byte = input->Byte();
    return byte > 199 ? kMaxSide - input->Byte() : byte < 199 ? byte % 67 - 1 : INT32_MIN;
}

// ---- Calls ----

// clang-format off
enum Op { HLine, VLine, Line, DrawFrame, FillRect, Polygon, Ellipse, FillEllipse, RoundRect,
          FillRoundRect, Blit, Bitmap, HalfBitmap, Text, OutlineText, Stamp, kOps };
// clang-format on

struct Call {
    Op op;
    OrnMinRenderRect rect;
    OrnMinRenderPoint radii; // or where a blit's source begins
    OrnMinRenderColour colour;
    int32_t style;
    std::vector<OrnMinRenderPoint> points;
    int32_t bitmapWidth, bitmapHeight;
    const uint32_t *bits;
    uint32_t words;
    std::string text;
};

// Bits that end at a fence; a bitmap that must not be read lies beyond it.
void ReadBitmap(Input *input, Call *call) {
    static const Fenced memory(768 * 1024);
    const int32_t oddSides[] = {32767, 32768, 0, -1, 1, INT32_MAX, INT32_MIN};
    const int32_t kind = input->Byte();
    bool legal = true;
    for (auto *side : {&call->bitmapWidth, &call->bitmapHeight}) {
        const bool odd = kind >> (side == &call->bitmapHeight) & 1;
        *side = odd ? oddSides[input->Byte() % 7] : input->Byte() % 130;
        if (kind % 4 == 3 && side == &call->bitmapHeight)
            *side = 1; // not both of them large
        legal = legal && *side > 0 && *side < 32768;
    }
    if (call->op == Stamp)
        call->words = uint32_t(input->Byte() * (kind & 4 ? 4 : 1));
    else if (legal)
        call->words = uint32_t((call->bitmapWidth + 31) / 32 * call->bitmapHeight);
    call->bits = reinterpret_cast<const uint32_t *>(memory.end) - call->words;
}

Call ReadCall(Input *input, int32_t width, int32_t height) {
    Call call = {};
    const auto point = [&] {
        const int32_t x = input->Coordinate(width);
        return OrnMinRenderPoint{x, input->Coordinate(height)};
    };
    call.op = Op(input->Byte() % kOps);
    const int32_t flags = input->Byte();
    call.style = flags & 1 ? (flags & 2 ? input->Word() : OrnMinRenderLineDashed) : 0;
    call.colour = {uint8_t(flags * 37), uint8_t(flags * 59), uint8_t(flags * 83 + 1)};
    const auto p0 = point(), p1 = point();
    call.rect = {p0.x, p0.y, p1.x, p1.y};
    if (call.op == RoundRect || call.op == FillRoundRect || call.op == Blit)
        call.radii = point();
    else if (call.op == Polygon)
        for (int n = input->Byte() % 40; n > 0; --n)
            call.points.push_back(point());
    else if (call.op == Bitmap || call.op == HalfBitmap || call.op == Stamp)
        ReadBitmap(input, &call);
    else if (call.op == Text || call.op == OutlineText)
        for (int n = input->Byte() % 32; n > 0; --n)
            call.text += char(input->Byte());
    return call;
}

OrnMinRenderFont *Font() {
    static const FontPtr font = [] {
        std::mt19937 random(1);
        cbf::Font source;
        source.lineHeight = 11;
        source.fallback = RandomGlyph(random, 40, 127);
        for (uint32_t c = 32; c < 128; ++c)
            source.glyphs[c] = RandomGlyph(random, c % 31 ? 20 : 127, 127);
        return Load(cbf::WriteFont(source).bytes);
    }();
    return font.get();
}

void DrawText(const Call &c, Image image) {
    const OrnMinRenderPoint start = {c.rect.left, c.rect.top};
    const int32_t lineStart = c.rect.right;
    const char *text = c.text.c_str();
    OrnMinRenderPoint drawn = start, measured = start;
    OrnMinRenderRect rect;
    OrnMinRenderSetFontDirection(Font(), c.style & 1 ? c.rect.bottom & 3 : c.style);
    if (c.op == Text)
        OrnMinRenderDrawTextY8(nullptr, image, Font(), text, &drawn, lineStart, c.colour.y);
    else
        OrnMinRenderDrawOutlineTextY8(nullptr, image, Font(), text, &drawn, lineStart, c.colour.u,
                                      c.colour.y);
    OrnMinRenderGetTextRect(nullptr, Font(), text, &measured, lineStart, &rect);
    Require(drawn.x == measured.x && drawn.y == measured.y, "measuring moves the pen as drawing");
    free(OrnMinRenderFixTextWidth(nullptr, Font(), text, lineStart));
}

// The Y8 sibling of a call, where both paint the same luma; false where there is none.
bool DrawY8(const Call &c, Image image, OrnMinRenderContext *context) {
    const auto [left, top, right, bottom] = c.rect;
    const uint8_t luma = c.colour.y;
    const bool solid = c.style == OrnMinRenderLineSolid;
    if (c.op == HLine && solid)
        OrnMinRenderDrawHLineY(context, image, left, right, top, luma, c.style);
    else if (c.op == VLine && top < bottom)
        OrnMinRenderDrawVLineY8(context, image, left, top, bottom, luma, c.style);
    else if (c.op == Line)
        OrnMinRenderDrawLineY8(context, image, {left, top}, {right, bottom}, luma, c.style);
    else if (c.op == DrawFrame && solid && top <= bottom)
        OrnMinRenderDrawFrameY8(context, image, &c.rect, luma, c.style);
    else if (c.op == FillRect)
        OrnMinRenderFillRectY8(context, image, &c.rect, luma);
    else if (c.op == Polygon)
        OrnMinRenderFillPolygonY8(context, image, c.points.data(), c.points.size(), luma);
    else if (c.op == Bitmap)
        OrnMinRenderDrawBitmapY8(image, &c.rect, c.bitmapWidth, c.bitmapHeight, c.bits, luma);
    else
        return false;
    return true;
}

void Draw(const Call &c, Image image, OrnMinRenderContext *context, Image source) {
    const auto &[op, rect, radii, ink, style, points, width, height, bits, words, text] = c;
    const auto [left, top, right, bottom] = rect;
    const OrnMinRenderPoint p0 = {left, top}, p1 = {right, bottom};
    const OrnMinRenderGlyphBox box = {int8_t(right), int8_t(bottom), int8_t(right >> 8),
                                      int8_t(bottom >> 8)};
    // clang-format off
    switch (op) {
    case HLine: return OrnMinRenderDrawHLineYUV420SP(context, image, left, right, top, ink, style);
    case VLine: return OrnMinRenderDrawVLineYUV420SP(context, image, left, top, bottom, ink, style);
    case Line: return OrnMinRenderDrawLineYUV420SP(context, image, p0, p1, ink, style);
    case DrawFrame: return OrnMinRenderDrawFrameYUV420SP(context, image, &rect, ink, style);
    case FillRect: return OrnMinRenderFillRectYUV420SP(context, image, &rect, ink);
    case Polygon: return OrnMinRenderFillPolygonYUV420SP(context, image, points.data(),
                                                         points.size(), ink);
    case Ellipse: return OrnMinRenderDrawEllipseYUV420SP(context, image, &rect, ink);
    case FillEllipse: return OrnMinRenderFillEllipseYUV420SP(context, image, &rect, ink);
    case RoundRect: return OrnMinRenderDrawRoundRectYUV420SP(context, image, &rect, &radii, ink);
    case FillRoundRect: return OrnMinRenderFillRoundRectYUV420SP(context, image, &rect, &radii, ink);
    case Blit: return OrnMinRenderBltYUV420SP(image, rect, source, radii);
    case Bitmap: return OrnMinRenderDrawBitmapYUV420SP(image, &rect, width, height, bits, ink);
    case HalfBitmap: return OrnMinRenderDrawBitmapSemiTransparentYUV420SP(image, &rect, width,
                                                                          height, bits, ink);
    case Stamp: return OrnMinRenderTextBitmap(&box, bits, words, image, &p0, ink.y);
    default: DrawText(c, image);
    }
    // clang-format on
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static OrnMinRenderContext *const context = OrnMinRenderCreateContext();
    static FencedFrame whole, luma, chroma, source;
    constexpr int kMaxCalls = 8; // an ellipse may take 131072 steps, each with all that is checked
    Input input = {data, data + size};
    const int32_t width = ReadSide(&input), height = ReadSide(&input);
    const int32_t sourceWidth = ReadSide(&input), sourceHeight = ReadSide(&input);
    whole.Place(&input, width, height, 3);
    luma.Place(&input, width, height, 1);
    chroma.Place(&input, width, height, 2);
    source.Place(&input, sourceWidth, sourceHeight, 3 - input.Byte() % 4);
    for (auto *plane : {&source.luma, &source.chroma})
        for (int32_t y = 0; y < plane->rows; ++y)
            memset(plane->Row(y), y, size_t(plane->bytes));

    for (int n = 0; n < kMaxCalls && input.at < input.end; ++n) {
        const Call call = ReadCall(&input, width, height);
        // Filled shapes need a context; nothing else does.
        const bool filled =
            call.op == Polygon || call.op == FillEllipse || call.op == FillRoundRect;
        OrnMinRenderContext *const needed = filled ? context : nullptr;
        Draw(call, &whole.image, context, &source.image);
        if (!DrawY8(call, &luma.image, needed))
            Draw(call, &luma.image, needed, &source.image);
        Draw(call, &chroma.image, needed, &source.image);
        if (call.op != HalfBitmap)
            Draw(call, &whole.image, context, &source.image);
        whole.luma.RequireSame(luma.luma, "luma alone, without context, drawn twice: all the same");
        whole.chroma.RequireSame(chroma.chroma, "chroma alone, drawn twice: all the same");
    }
    for (auto *frame : {&whole, &luma, &chroma, &source})
        for (auto *plane : {&frame->luma, &frame->chroma})
            plane->RequirePaperAroundPixels();
    return 0;
}
