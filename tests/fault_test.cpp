// SPDX-License-Identifier: MIT
// What happens when memory is short or a file can't be read on: the n-th call of the C library
// fails, for n = 1, 2, ... until the call under test no longer gets that far. The linker routes the
// library's calls through the __wrap functions below.
#include "font_files.h"
#include "frame.h"
#include "text_font.h"

using namespace orn;

namespace {

// Calls left before one fails (0: none does), calls seen, and allocations not yet freed.
struct Fault {
    int memory = 0;
    int file = 0;
    int allocations = 0;
    int live = 0;
    int openFiles = 0;
};
Fault fault;

bool Fails(int *countdown) {
    return *countdown > 0 && --*countdown == 0;
}

void *Allocated(void *memory) {
    ++fault.allocations;
    fault.live += memory != nullptr;
    return memory;
}

} // namespace

extern "C" {
void *__real_malloc(size_t);
void *__real_calloc(size_t, size_t);
void *__real_realloc(void *, size_t);
void __real_free(void *);
FILE *__real_fopen(const char *, const char *);
int __real_fclose(FILE *);
size_t __real_fread(void *, size_t, size_t, FILE *);
int __real_fseek(FILE *, long, int);
long __real_ftell(FILE *);

void *__wrap_malloc(size_t size) {
    return Allocated(Fails(&fault.memory) ? nullptr : __real_malloc(size));
}
void *__wrap_calloc(size_t count, size_t size) {
    return Allocated(Fails(&fault.memory) ? nullptr : __real_calloc(count, size));
}
void *__wrap_realloc(void *old, size_t size) {
    if (Fails(&fault.memory))
        return nullptr;
    fault.live -= old != nullptr;
    return Allocated(__real_realloc(old, size));
}
void __wrap_free(void *memory) {
    fault.live -= memory != nullptr;
    __real_free(memory);
}
FILE *__wrap_fopen(const char *path, const char *mode) {
    FILE *file = __real_fopen(path, mode);
    fault.openFiles += file != nullptr;
    return file;
}
int __wrap_fclose(FILE *file) {
    --fault.openFiles;
    return __real_fclose(file);
}
size_t __wrap_fread(void *to, size_t size, size_t count, FILE *file) {
    return __real_fread(to, size, Fails(&fault.file) ? count / 2 : count, file);
}
int __wrap_fseek(FILE *file, long offset, int origin) {
    return Fails(&fault.file) ? -1 : __real_fseek(file, offset, origin);
}
long __wrap_ftell(FILE *file) {
    return Fails(&fault.file) ? -1 : __real_ftell(file);
}
}

namespace {

const std::string kText = "!AB C\nAB \"#";

// Runs the call with its n-th step failing, n = 1, 2, ...; check sees every outcome. Ends after the
// first run that no failure reached.
template <class Call, class Check> void FailEachStep(int *countdown, Call call, Check check) {
    for (int n = 1; n < 500; ++n) {
        SCOPED_TRACE("step " + std::to_string(n));
        fault = Fault();
        *countdown = n;
        auto result = call();
        const bool reached = *countdown == 0;
        *countdown = 0;
        check(result, reached);
        ASSERT_EQ(fault.live, 0);
        ASSERT_EQ(fault.openFiles, 0);
        if (!reached || testing::Test::HasFatalFailure())
            return;
    }
    FAIL() << "never got through";
}

Frame *Draw(Frame *frame, OrnMinRenderFont *font, bool outlined) {
    OrnMinRenderPoint pen = {4, 20};
    if (outlined)
        OrnMinRenderDrawOutlineTextY8(nullptr, &frame->image, font, kText.c_str(), &pen, 4, 9, 200);
    else
        OrnMinRenderDrawTextY8(nullptr, &frame->image, font, kText.c_str(), &pen, 4, 200);
    return frame;
}

TEST(ShortMemory, ContextsAreWholeOrNull) {
    FailEachStep(&fault.memory, OrnMinRenderCreateContext,
                 [](OrnMinRenderContext *context, bool reached) {
                     EXPECT_EQ(context == nullptr, reached);
                     OrnMinRenderDestroyContext(context);
                 });
}

TEST(ShortMemory, FontsLoadWithoutWhatCouldNotBeHeld) {
    const TempFile file(SampleFont());
    int missing = 0;
    FailEachStep(
        &fault.memory, [&] { return OrnMinRenderLoadCbfFont(file.path.c_str()); },
        [&](OrnMinRenderFont *font, bool reached) {
            const bool whole = font && font->huffLuts[0] && font->huffLuts[1] &&
                               font->index.words &&
                               font->index.farCount == 6; // U+110004 to U+110009
            EXPECT_EQ(whole, !reached);
            missing += font && !whole;
            OrnMinRenderDestroyFont(font);
        });
    EXPECT_GT(missing, 6) << "tables and index are optional";
}

TEST(ShortMemory, GlyphsThatCouldNotBeDecodedAreDecodedLater) {
    const TempFile file(SampleFont());
    fault = Fault();
    Frame expected(90, 50);
    const FontPtr pristine(OrnMinRenderLoadCbfFont(file.path.c_str()));
    Draw(&expected, pristine.get(), false);
    for (const bool outlined : {false, true}) {
        OrnMinRenderFont *font = nullptr;
        FailEachStep(
            &fault.memory,
            [&] {
                const int armed = fault.memory;
                fault.memory = 0;
                font = OrnMinRenderLoadCbfFont(file.path.c_str());
                fault.memory = armed;
                Frame frame(90, 50);
                Draw(&frame, font, outlined);
                return 0;
            },
            [&](int, bool) {
                Frame again(90, 50);
                Draw(&again, font, false);
                EXPECT_EQ(again.luma, expected.luma);
                OrnMinRenderDestroyFont(font);
            });
    }
}

// The 1,024th entry would get a large cache its second way to the entries.
TEST(ShortMemory, LargeCachesServeWithoutTheirSecondWay) {
    FontFile file;
    file.glyphData.assign(64, 0);
    file.index = Index(0x7FFFFFFF, Table({1}, {0}), {});
    const FontPtr font = Load(file.Bytes());
    for (uint32_t i = 0; i < 1023; ++i)
        ASSERT_NE(GetGlyph(font.get(), 256 * i), nullptr);
    fault = Fault();
    fault.memory = 2; // after that for the outline
    ASSERT_NE(GetGlyph(font.get(), 256 * 1023), nullptr);
    ASSERT_EQ(font->places, nullptr);
    for (uint32_t i = 0; i < 1024; ++i)
        ASSERT_EQ(GetGlyph(font.get(), 256 * i), font->glyphs + i);
    EXPECT_EQ(font->glyphCount, 1024u);
}

TEST(ShortMemory, FittedTextIsWholeOrNull) {
    const TempFile file(SampleFont());
    const FontPtr font(OrnMinRenderLoadCbfFont(file.path.c_str()));
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "A ";
    FailEachStep(
        &fault.memory,
        [&] { return OrnMinRenderFixTextWidth(nullptr, font.get(), text.c_str(), 1); },
        [](char *fitted, bool reached) {
            EXPECT_EQ(fitted == nullptr, reached);
            __wrap_free(fitted);
        });
}

TEST(BrokenFiles, LoadingFailsCleanlyAtEveryReadAndSeek) {
    const TempFile file(SampleFont());
    int refused = 0;
    FailEachStep(
        &fault.file, [&] { return OrnMinRenderLoadCbfFont(file.path.c_str()); },
        [&](OrnMinRenderFont *font, bool) {
            refused += font == nullptr;
            Frame frame(90, 50);
            if (font)
                Draw(&frame, font, true);
            OrnMinRenderDestroyFont(font);
        });
    EXPECT_GE(refused, 5) << "length, header and glyph data are not optional";
}

TEST(Allocation, DrawingNeedsNone) {
    const TempFile file(SampleFont());
    const FontPtr font(OrnMinRenderLoadCbfFont(file.path.c_str()));
    Frame frame(90, 50), source(90, 50);
    Draw(&frame, font.get(), true);
    auto *context = Context();
    std::vector<OrnMinRenderPoint> star;
    for (int i = 0; i < 1200; ++i)
        star.push_back({i * 37 % 90, i * 23 % 50});
    const OrnMinRenderRect rect = {5, 5, 80, 45};
    const OrnMinRenderPoint radii = {9, 9};
    const uint32_t bits[] = {0xA5A5A5A5, 0x5A5A5A5A};
    const auto *image = &frame.image;

    fault = Fault();
    for (const int style : {0, 1}) {
        OrnMinRenderDrawFrameYUV420SP(context, image, &rect, kInk, style);
        OrnMinRenderDrawLineYUV420SP(context, image, {1, 2}, {80, 40}, kInk, style);
    }
    OrnMinRenderFillRectYUV420SP(context, image, &rect, kInk);
    OrnMinRenderFillPolygonYUV420SP(context, image, star.data(), star.size(), kInk);
    OrnMinRenderFillPolygonYUV420SP(context, image, star.data(), 60, kInk);
    OrnMinRenderDrawEllipseYUV420SP(context, image, &rect, kInk);
    OrnMinRenderFillEllipseYUV420SP(context, image, &rect, kInk);
    OrnMinRenderDrawRoundRectYUV420SP(context, image, &rect, &radii, kInk);
    OrnMinRenderFillRoundRectYUV420SP(context, image, &rect, &radii, kInk);
    OrnMinRenderBltYUV420SP(image, rect, &source.image, {0, 0});
    OrnMinRenderDrawBitmapSemiTransparentYUV420SP(image, &rect, 32, 2, bits, kInk);
    Draw(&frame, font.get(), false);
    Draw(&frame, font.get(), true);
    OrnMinRenderPoint pen = {0, 0};
    OrnMinRenderRect measured;
    OrnMinRenderGetTextRect(context, font.get(), "never drawn: zyx", &pen, 0, &measured);
    EXPECT_EQ(fault.allocations, 0);
}

} // namespace
