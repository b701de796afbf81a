// SPDX-License-Identifier: MIT
// Text against a naive reference: glyph cells turned one by one, bands by definition; and the
// decoding and measuring of strings by tables.
#include "font_files.h"
#include "frame.h"

#include <algorithm>
#include <climits>

namespace {

// ---- Reference ----

struct Cell {
    int x, y;
};

// A pixel cell at (x, y) from the pen, turned about the pen point.
Cell Turn(Cell c, int direction) {
    switch (direction) {
    case OrnMinRenderTextDirection::Down:
        return {-c.y - 1, c.x};
    case OrnMinRenderTextDirection::Up:
        return {c.y, -c.x - 1};
    case OrnMinRenderTextDirection::Inverted:
        return {-c.x - 1, -c.y - 1};
    default:
        return c;
    }
}

std::vector<Cell> InkCells(const cbf::Glyph &g, int direction) {
    std::vector<Cell> cells;
    for (int y = 0; y < g.height; ++y)
        for (int x = 0; x < g.width; ++x)
            if (g.pixels[size_t(y * g.width + x)])
                cells.push_back(Turn({g.bearingX + x, y - g.bearingY}, direction));
    return cells;
}

void Paint(Frame *frame, const std::vector<Cell> &cells, OrnMinRenderPoint pen, int reach,
           uint8_t luma) {
    const auto own = [&](int x, int y) {
        return std::any_of(cells.begin(), cells.end(),
                           [=](Cell c) { return c.x == x && c.y == y; });
    };
    for (const Cell &c : cells)
        for (int y = c.y - reach; y <= c.y + reach; ++y)
            for (int x = c.x - reach; x <= c.x + reach; ++x) {
                const int px = pen.x + x, py = pen.y + y;
                if (px >= 0 && px < frame->image.width && py >= 0 && py < frame->image.height &&
                    (reach == 0 || !own(x, y)))
                    frame->Y(px, py) = luma;
            }
}

struct Reference {
    const cbf::Font &font;
    int direction;

    const cbf::Glyph &Find(uint32_t c) const {
        const auto found = font.glyphs.find(c);
        return found == font.glyphs.end() ? font.fallback : found->second;
    }
    void Step(OrnMinRenderPoint *pen, int along, int across, const int *lineStart) const {
        const Cell a = direction == 1   ? Cell{-across, along}
                       : direction == 2 ? Cell{across, -along}
                       : direction == 3 ? Cell{-along, -across}
                                        : Cell{along, across};
        pen->x += a.x;
        pen->y += a.y;
        if (lineStart)
            (direction == 1 || direction == 2 ? pen->y : pen->x) = *lineStart;
    }
    // Draws (outline < 0: plain) and measures.
    OrnMinRenderRect Draw(Frame *frame, const std::vector<uint32_t> &text, OrnMinRenderPoint *pen,
                          int lineStart, int outline, uint8_t fill) const {
        OrnMinRenderRect rect = {pen->x, pen->y, pen->x, pen->y};
        std::vector<Cell> pending;
        OrnMinRenderPoint pendingPen = {};
        for (const uint32_t c : text) {
            if (c == 10) {
                Step(pen, 0, font.lineHeight, &lineStart);
                continue;
            }
            const cbf::Glyph &g = Find(c);
            const auto cells = InkCells(g, direction);
            const Cell a = Turn({g.bearingX, -g.bearingY}, direction);
            const Cell b = Turn({g.bearingX + g.width - 1, g.height - 1 - g.bearingY}, direction);
            if (g.width > 0 && g.height > 0) {
                rect.left = std::min(rect.left, pen->x + std::min(a.x, b.x));
                rect.top = std::min(rect.top, pen->y + std::min(a.y, b.y));
                rect.right = std::max(rect.right, pen->x + std::max(a.x, b.x) + 1);
                rect.bottom = std::max(rect.bottom, pen->y + std::max(a.y, b.y) + 1);
            }
            if (outline >= 0) {
                Paint(frame, cells, *pen, 2, uint8_t(outline));
                Paint(frame, pending, pendingPen, 0, fill);
                pending = cells;
                pendingPen = *pen;
            } else {
                Paint(frame, cells, *pen, 0, fill);
            }
            Step(pen, g.advance, 0, nullptr);
        }
        Paint(frame, pending, pendingPen, 0, fill);
        return rect;
    }
};

// length 0: as short as it goes.
std::string Utf8(uint32_t c, int length = 0) {
    if (length == 0)
        for (const uint32_t limit : {0x80u, 0x800u, 0x10000u, 0x200000u, 0x4000000u, 0x80000000u}) {
            ++length;
            if (c < limit)
                break;
        }
    if (length == 1)
        return std::string(1, char(c));
    std::string bytes(1, char((0xFF00 >> length & 0xFF) | c >> 6 * (length - 1)));
    for (int i = length - 2; i >= 0; --i)
        bytes += char(0x80 | (c >> 6 * i & 0x3F));
    return bytes;
}

std::string Utf8(const std::vector<uint32_t> &text) {
    std::string bytes;
    for (const uint32_t c : text)
        bytes += Utf8(c);
    return bytes;
}

void ExpectPoint(OrnMinRenderPoint actual, OrnMinRenderPoint expected) {
    ASSERT_EQ(actual.x, expected.x);
    ASSERT_EQ(actual.y, expected.y);
}

std::vector<int> Values(const OrnMinRenderRect &r) {
    return {r.left, r.top, r.right, r.bottom};
}

cbf::Font RandomFont(std::mt19937 &random, int maxSide, int maxBearing) {
    cbf::Font font;
    font.lineHeight = static_cast<int>(random() % 30) - 4;
    font.fallback = RandomGlyph(random, maxSide, maxBearing);
    for (const uint32_t c : {1u, 65u, 66u, 321u, 0x3FFu, 0x10FFFFu, 0x110000u, 0x4000005u})
        font.glyphs[c] = RandomGlyph(random, maxSide, maxBearing);
    font.glyphs[66].width = 0; // no pixels, but an advance
    font.glyphs[66].pixels.clear();
    return font;
}

// ---- Whole texts ----

TEST(Text, MatchesTheReferenceInEveryDirection) {
    std::mt19937 random(17);
    const std::vector<uint32_t> alphabet = {1,        65,        66,         321, 0x3FF, 0x10FFFF,
                                            0x110000, 0x4000005, 0x7FFFFFFF, 10,  9,     0x200};
    for (int i = 0; i < 400; ++i) {
        const bool large = i % 8 == 0; // several words a row
        auto source = large ? RandomFont(random, 122, 125) : RandomFont(random, 18, 24);
        source.glyphs[65].pixels.assign(source.glyphs[65].pixels.size(), 1);
        const auto file = cbf::WriteFont(source);
        ASSERT_EQ(file.fault.problem, cbf::Problem::None);
        const FontPtr font = Load(file.bytes);
        ASSERT_NE(font, nullptr);
        for (const int direction : {0, 1, 2, 3, 7, -1}) {
            OrnMinRenderSetFontDirection(font.get(), direction);
            std::vector<uint32_t> text(random() % 7);
            for (auto &c : text)
                c = alphabet[random() % alphabet.size()];
            const std::string bytes = Utf8(text);
            const OrnMinRenderPoint start = {static_cast<int>(random() % 80) - 10,
                                             static_cast<int>(random() % 70) - 10};
            const int lineStart = static_cast<int>(random() % 50);
            SCOPED_TRACE("case " + std::to_string(i) + " direction " + std::to_string(direction));

            const Reference reference = {source, direction};
            for (const int outline : {-1, 90}) {
                Frame drawn(57, 49), expected(57, 49);
                OrnMinRenderPoint pen = start, expectedPen = start, measuredPen = start;
                const auto rect =
                    reference.Draw(&expected, text, &expectedPen, lineStart, outline, 200);
                if (outline < 0)
                    OrnMinRenderDrawTextY8(nullptr, &drawn.image, font.get(), bytes.c_str(), &pen,
                                           lineStart, 200);
                else
                    OrnMinRenderDrawOutlineTextY8(nullptr, &drawn.image, font.get(), bytes.c_str(),
                                                  &pen, lineStart, 90, 0x7700 + 200);
                ASSERT_TRUE(drawn == expected) << drawn.Picture() << expected.Picture();
                ExpectPoint(pen, expectedPen);
                OrnMinRenderRect measured;
                OrnMinRenderGetTextRect(nullptr, font.get(), bytes.c_str(), &measuredPen, lineStart,
                                        &measured);
                ExpectPoint(measuredPen, expectedPen);
                // Empty boxes move the measured edges, too; only ink is compared.
                ASSERT_TRUE(measured.left <= rect.left && measured.top <= rect.top &&
                            measured.right >= rect.right && measured.bottom >= rect.bottom);
            }
        }
    }
}

TEST(Text, MeasuresByTheBoxesOfItsGlyphs) {
    const struct {
        int direction;
        std::string text;
        std::vector<int> rect;
        OrnMinRenderPoint pen;
    } cases[] = {
        // clang-format off
        {0, "",     {10, 20, 10, 20}, {10, 20}}, {0, "A",    {10, 13, 16, 20}, {16, 20}},
        {1, "A",    {10, 20, 17, 26}, {10, 26}}, {2, "A",    {3, 14, 10, 20},  {10, 14}},
        {3, "A",    {4, 20, 10, 27},  {4, 20}},  {7, "A",    {10, 13, 16, 20}, {16, 20}},
        {0, "A\nA", {10, 13, 17, 36}, {17, 36}}, {1, "A\nA", {-6, 12, 17, 26}, {-6, 17}},
        {2, "A\nA", {3, 5, 26, 20},   {26, 5}},  {3, "A\nA", {4, 4, 10, 27},   {5, 4}},
        // What ends the text: bad lead bytes, sequences cut short, an overlong 0.
        {0, "A\x80" "AAAAA", {10, 13, 16, 20}, {16, 20}},
        {0, "A\xFE" "AAAAA", {10, 13, 16, 20}, {16, 20}},
        {0, "A\xC3",     {10, 13, 16, 20}, {16, 20}}, {0, "A\xE2\x82", {10, 13, 16, 20}, {16, 20}},
        {0, "\xC0\x80" "A", {10, 20, 10, 20}, {10, 20}},
        {0, "\xC1\x01",     {10, 13, 16, 20}, {16, 20}}, // six bits of a continuation count
        {0, "\t", {10, 18, 12, 20}, {13, 20}},           // outside the index: the fallback glyph
        // clang-format on
    };
    const FontPtr font = Load(cbf::WriteFont(BlockFont()).bytes);
    for (const auto &c : cases) {
        OrnMinRenderSetFontDirection(font.get(), c.direction);
        OrnMinRenderPoint pen = {10, 20};
        OrnMinRenderRect rect;
        OrnMinRenderGetTextRect(nullptr, font.get(), c.text.c_str(), &pen, 11, &rect);
        EXPECT_EQ(Values(rect), c.rect) << c.direction << ' ' << testing::PrintToString(c.text);
        EXPECT_EQ(pen.x, c.pen.x);
        EXPECT_EQ(pen.y, c.pen.y);
    }
    for (int length = 2; length <= 6; ++length) { // overlong forms decode
        OrnMinRenderPoint pen = {0, 0};
        OrnMinRenderRect rect;
        OrnMinRenderGetTextRect(nullptr, font.get(), Utf8('A', length).c_str(), &pen, 0, &rect);
        EXPECT_EQ(pen.x, 6) << length;
    }
}

// A pen stops at the limits of int32, and measuring moves it as drawing does.
TEST(Text, PensStopAtTheLimits) {
    auto source = BlockFont();
    source.glyphs['B'] = {4, 4, -90, -90, 32767, std::vector<uint8_t>(16, 1)};
    source.glyphs['C'] = {4, 4, 90, 94, -32768, std::vector<uint8_t>(16, 1)};
    const Ints places = {INT_MIN,         INT_MIN + 60, INT_MIN + 0x500, -200,
                         INT_MAX - 0x500, INT_MAX - 60, INT_MAX};
    const char *const texts[] = {"A", "B", "C", "\n", "BC\nBC"};
    const Int advances[] = {6, 32767, -32768};
    for (const int lineHeight : {INT_MIN, INT_MAX}) {
        source.lineHeight = lineHeight;
        const FontPtr font = Load(cbf::WriteFont(source).bytes);
        ForAll({Range(0, 3), places, places, Range(0, 4)}, [&](const Ints &v) {
            OrnMinRenderSetFontDirection(font.get(), int(v[0]));
            Frame frame(40, 40), untouched(40, 40);
            OrnMinRenderPoint pen = {int(v[1]), int(v[2])}, measured = pen;
            OrnMinRenderRect rect;
            OrnMinRenderDrawOutlineTextY8(nullptr, &frame.image, font.get(), texts[v[3]], &pen,
                                          pen.x, 1, 2);
            OrnMinRenderGetTextRect(nullptr, font.get(), texts[v[3]], &measured, measured.x, &rect);
            ExpectPoint(measured, pen);
            if (v[0] == 0 && v[3] <= 2)
                ASSERT_EQ(pen.x, std::clamp(v[1] + advances[v[3]], Int{INT_MIN}, Int{INT_MAX}));
            ASSERT_TRUE(rect.left <= v[1] && v[1] <= rect.right && rect.top <= v[2] &&
                        v[2] <= rect.bottom);
            ASSERT_TRUE(frame == untouched);
        });
    }
}

TEST(Text, MissingPlanesMoveThePen) {
    const FontPtr font = Load(cbf::WriteFont(BlockFont()).bytes);
    Frame chromaOnly(30, 30, 2);
    OrnMinRenderPoint pen = {5, 20};
    OrnMinRenderRect rect = {1, 2, 3, 4};
    OrnMinRenderDrawTextY8(nullptr, &chromaOnly.image, font.get(), "A", &pen, 0, 9);
    OrnMinRenderDrawOutlineTextY8(nullptr, &chromaOnly.image, font.get(), "A", &pen, 0, 9, 9);
    EXPECT_EQ(pen.x, 17);
    OrnMinRenderGetTextRect(nullptr, font.get(), "A", nullptr, 0, &rect);
    EXPECT_EQ(Values(rect), (std::vector<int>{1, 2, 3, 4}));
    OrnMinRenderGetTextRect(nullptr, nullptr, "A", &pen, 0, &rect);
    EXPECT_EQ(Values(rect), (std::vector<int>{17, 20, 17, 20}));
}

// A rotated side of 123 or more makes the outline's box wrap: its fill alone is drawn.
TEST(Text, OutlinesOfVeryLargeGlyphsAreLeftOut) {
    for (const int width : {122, 123, 127}) {
        cbf::Font source = BlockFont();
        source.glyphs['A'] = {width, 1, 0, 1, 6, std::vector<uint8_t>(size_t(width), 1)};
        const FontPtr font = Load(cbf::WriteFont(source).bytes);
        Frame frame(140, 20);
        OrnMinRenderPoint pen = {5, 10};
        OrnMinRenderDrawOutlineTextY8(nullptr, &frame.image, font.get(), "A", &pen, 0, 90, 200);
        EXPECT_EQ(frame.Y(5, 9), 200);
        EXPECT_EQ(frame.Y(5, 8), width == 122 ? 90 : kPaper);
    }
}

} // namespace
