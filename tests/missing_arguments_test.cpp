// SPDX-License-Identifier: MIT
// Every call without each of its pointers in turn: it must do nothing.
#include "font_files.h"
#include "frame.h"

#include <tuple>

namespace {

template <class T> T OrNull(T given, bool) {
    return given;
}
template <class T> T *OrNull(T *given, bool missing) {
    return missing ? nullptr : given;
}
template <class Call, class Given, size_t... i>
void Without(Call call, const Given &given, size_t missing, std::index_sequence<i...>) {
    call(OrNull(std::get<i>(given), i == missing)...);
}

// Makes the call once without each of its pointers but the context, which few calls need.
template <class Result, class... Args>
void WithoutEach(Result (*call)(Args...), std::common_type_t<Args>... given) {
    const bool needed[] = {
        (std::is_pointer_v<Args> && !std::is_same_v<Args, OrnMinRenderContext *>)...};
    for (size_t i = 0; i < sizeof...(Args); ++i)
        if (needed[i])
            Without(call, std::tuple<Args...>{given...}, i, std::index_sequence_for<Args...>());
}

struct MissingArguments : testing::Test {
    Frame frame{30, 30}, untouched{30, 30};
    const OrnMinRenderImage *image = &frame.image;
    OrnMinRenderContext *none = nullptr;
    OrnMinRenderPoint points[3] = {{9, 9}, {20, 9}, {20, 20}}, *pen = points;
    OrnMinRenderRect rect = {2, 2, 20, 20};
    const uint32_t bits[2] = {0xFFFFFFFF, 0xFFFFFFFF};
};

TEST_F(MissingArguments, LinesAndShapesDoNothing) {
    for (auto *line : {OrnMinRenderDrawHLineY8, OrnMinRenderDrawHLineY, OrnMinRenderDrawVLineY8})
        WithoutEach(line, none, image, 3, 9, 12, 7, 0);
    for (auto *line : {OrnMinRenderDrawHLineYUV420SP, OrnMinRenderDrawVLineYUV420SP})
        WithoutEach(line, none, image, 3, 9, 12, kInk, 0);
    WithoutEach(OrnMinRenderDrawLineY8, none, image, points[0], points[1], 7, 0);
    WithoutEach(OrnMinRenderDrawLineYUV420SP, none, image, points[0], points[1], kInk, 0);
    WithoutEach(OrnMinRenderDrawFrameY8, none, image, &rect, 7, 0);
    WithoutEach(OrnMinRenderDrawFrameYUV420SP, none, image, &rect, kInk, 0);
    WithoutEach(OrnMinRenderFillRectY8, none, image, &rect, 7);
    WithoutEach(OrnMinRenderFillRectYUV420SP, none, image, &rect, kInk);
    WithoutEach(OrnMinRenderDrawEllipseYUV420SP, none, image, &rect, kInk);
    WithoutEach(OrnMinRenderDrawRoundRectYUV420SP, none, image, &rect, pen, kInk);
    WithoutEach(OrnMinRenderFillPolygonY8, Context(), image, points, 3, 7);
    WithoutEach(OrnMinRenderFillPolygonYUV420SP, Context(), image, points, 3, kInk);
    WithoutEach(OrnMinRenderFillEllipseYUV420SP, Context(), image, &rect, kInk);
    WithoutEach(OrnMinRenderFillRoundRectYUV420SP, Context(), image, &rect, pen, kInk);
    OrnMinRenderFillPolygonYUV420SP(none, image, points, 3, kInk);
    OrnMinRenderFillEllipseYUV420SP(none, image, &rect, kInk);
    OrnMinRenderFillRoundRectYUV420SP(none, image, &rect, pen, kInk);
    EXPECT_TRUE(frame == untouched);
}

TEST_F(MissingArguments, PicturesDoNothing) {
    Frame source(30, 30);
    WithoutEach(OrnMinRenderBltYUV420SP, image, rect, &source.image, points[0]);
    WithoutEach(OrnMinRenderDrawBitmapY8, image, &rect, 8, 2, bits, 7);
    for (auto *draw :
         {OrnMinRenderDrawBitmapYUV420SP, OrnMinRenderDrawBitmapSemiTransparentYUV420SP})
        WithoutEach(draw, image, &rect, 8, 2, bits, kInk);
    OrnMinRenderDrawBitmapYUV420SP(image, &rect, 0, 2, bits, kInk);
    OrnMinRenderDrawBitmapYUV420SP(image, &rect, 8, 0, bits, kInk);
    EXPECT_TRUE(frame == untouched);
}

TEST_F(MissingArguments, TextDoesNothing) {
    const FontPtr owner = Load(cbf::WriteFont(BlockFont()).bytes);
    auto *font = owner.get();
    const OrnMinRenderGlyphBox box = {8, 2, 0, 2};
    OrnMinRenderGlyph glyph = {};
    glyph.record = reinterpret_cast<const uint8_t *>(bits);
    WithoutEach(OrnMinRenderTextBitmap, &box, bits, 2, image, pen, 7);
    WithoutEach(OrnMinRenderTextRenderCacheGlyph, font, &glyph);
    glyph.record = nullptr;
    OrnMinRenderTextRenderCacheGlyph(font, &glyph);
    WithoutEach(OrnMinRenderDrawTextY8, none, image, font, "A", pen, 0, 7);
    WithoutEach(OrnMinRenderDrawOutlineTextY8, none, image, font, "A", pen, 0, 7, 8);
    WithoutEach(OrnMinRenderGetTextRect, none, font, "A", pen, 0, &rect);
    WithoutEach(OrnMinRenderFixTextWidth, none, font, "A", 9); // LeakSanitizer sees any result
    WithoutEach(OrnMinRenderSetFontDirection, font, 0);
    EXPECT_TRUE(frame == untouched);
    EXPECT_EQ(pen->x, 9);
    EXPECT_EQ(pen->y, 9);
}

TEST_F(MissingArguments, ColoursDoNothing) {
    using Convert = void (*)(uint8_t *, const uint8_t *);
    uint8_t bytes[] = {1, 2, 3};
    for (const Convert convert : {Convert{OrnMinRenderRGB2YUV}, Convert{OrnMinRenderYUV2RGB}})
        WithoutEach(convert, bytes, bytes);
    OrnMinRenderColour *colour = nullptr;
    OrnMinRenderRGB2YUV(colour, bytes);
    OrnMinRenderYUV2RGB(bytes, colour);
    EXPECT_EQ(std::vector<int>(bytes, bytes + 3), (std::vector<int>{1, 2, 3}));
}

} // namespace
