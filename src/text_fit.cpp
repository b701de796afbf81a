// SPDX-License-Identifier: MIT
// Breaking a text into lines that fit a width, word by word.
#include "arithmetic.h"
#include "text.h"
#include "text_font.h"

#include <stdlib.h>
#include <string.h>

using namespace orn;

// ---- The result ----

struct Bytes {
    const char *first;
    const char *end;
};

// The growing result. Once memory is short it stays null and takes nothing more.
struct TextBuffer {
    char *bytes;
    size_t length;
    size_t capacity;
};

static void Append(TextBuffer *buffer, Bytes bytes) {
    const auto count = static_cast<size_t>(bytes.end - bytes.first);
    if (!buffer->bytes)
        return;
    if (buffer->length + count >= buffer->capacity) {
        const size_t doubled = 2 * buffer->length + 1;
        const size_t needed = buffer->length + count + 1;
        buffer->capacity = doubled > needed ? doubled : needed;
        auto *grown = static_cast<char *>(realloc(buffer->bytes, buffer->capacity));
        if (!grown)
            free(buffer->bytes);
        buffer->bytes = grown;
        if (!grown)
            return;
    }
    memcpy(buffer->bytes + buffer->length, bytes.first, count);
    buffer->length += count;
    buffer->bytes[buffer->length] = 0;
}

// ---- Words ----

// Fits a text word by word. Widths are pixels along the line, the same in every direction.
struct TextFitter {
    const OrnMinRenderFont *font;
    int64_t limit;
    TextBuffer out;
    int64_t lineWidth; // words and separators already on the line
    int64_t wordWidth; // of the current word's ink
    int64_t penOffset; // advances of the current word
    bool skipping;     // after a break at a blank, until the next glyph
};

static bool IsBlank(uint32_t codePoint) {
    return codePoint == ' ' || codePoint == '\t';
}

static int32_t AdvanceOf(const OrnMinRenderFont *font, uint32_t codePoint) {
    const uint8_t *record = FindRecord(font, codePoint);
    return record ? GlyphAdvance(record) : 0;
}

// Puts the word, with the separator that ended it, onto the line, or onto a new one after the break
// marker if it does not fit; tells whether it broke the line.
static bool PlaceWord(TextFitter *fitter, Bytes word) {
    static const char kMarker[] = "\n- ";
    const bool breaks = fitter->lineWidth + fitter->wordWidth > fitter->limit;
    if (breaks)
        Append(&fitter->out, {kMarker, kMarker + strlen(kMarker)});
    Append(&fitter->out, word);
    return breaks;
}

static void EndLine(TextFitter *fitter, Bytes wordAndFeed) {
    PlaceWord(fitter, wordAndFeed);
    fitter->lineWidth = 0;
    fitter->wordWidth = 0;
    fitter->penOffset = 0;
    fitter->skipping = false;
}

static void EndWord(TextFitter *fitter, Bytes wordAndBlank, int32_t blankAdvance) {
    if (fitter->skipping)
        return;
    const bool breaks = PlaceWord(fitter, wordAndBlank);
    fitter->lineWidth = (breaks ? 0 : fitter->lineWidth) + fitter->wordWidth + blankAdvance;
    fitter->skipping = breaks;
    fitter->wordWidth = 0;
    fitter->penOffset = 0;
}

static void AddGlyphToWord(TextFitter *fitter, uint32_t codePoint) {
    fitter->skipping = false;
    const uint8_t *record = FindRecord(fitter->font, codePoint);
    if (!record)
        return;
    fitter->wordWidth = Max(fitter->wordWidth, fitter->penOffset + UprightBox(record).width);
    fitter->penOffset += GlyphAdvance(record);
}

static void FitWords(TextFitter *fitter, const char *text) {
    const char *word = text;
    const char *next = text;
    while (const uint32_t codePoint = NextCodePoint(&next)) {
        if (codePoint == kLineFeed)
            EndLine(fitter, {word, next});
        else if (IsBlank(codePoint))
            EndWord(fitter, {word, next}, AdvanceOf(fitter->font, codePoint));
        else
            AddGlyphToWord(fitter, codePoint);
        if (codePoint == kLineFeed || IsBlank(codePoint))
            word = next;
    }
    PlaceWord(fitter, {word, next});
}

char *OrnMinRenderFixTextWidth(OrnMinRenderContext *, const OrnMinRenderFont *font,
                               const char *text, int32_t width) {
    if (!font || !text || !*text)
        return nullptr;
    // Room for the text and a marker every thirty bytes.
    const auto capacity = static_cast<size_t>(1.1 * static_cast<double>(strlen(text)));
    TextFitter fitter = {font, width, {static_cast<char *>(malloc(capacity)), 0, capacity}, 0, 0,
                         0,    false};
    FitWords(&fitter, text);
    return fitter.out.bytes;
}
