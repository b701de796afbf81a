// CBF fonts and text: loading with its Huffman tables and code-point index, the glyph cache, the
// layout that measuring and drawing share, and the fitting of text to a width.
#include "text.h"

#include "pixop.h"

#include <limits.h>
#include <stdlib.h>

// ---- The checked reader ----

static bool OpenFont(FontReader *reader, const char *path) {
    reader->file = fopen(path, "rb");
    if (!reader->file)
        return false;
    const bool atEnd = fseek(reader->file, 0, SEEK_END) == 0;
    const long length = atEnd ? ftell(reader->file) : -1;
    if (length < 0 || fseek(reader->file, 0, SEEK_SET) != 0) {
        fclose(reader->file);
        return false;
    }
    reader->length = static_cast<uint64_t>(length);
    reader->position = 0;
    return true;
}

static bool SeekTo(FontReader *reader, uint64_t offset) {
    // Where long has 32 bits an offset may exceed it, but no file that fseek can open does.
    if (offset > reader->length || offset > LONG_MAX ||
        fseek(reader->file, static_cast<long>(offset), SEEK_SET) != 0)
        return false;
    reader->position = offset;
    return true;
}

// Whether so many bytes follow: asked before memory is taken for them.
static bool HasBytes(const FontReader *reader, uint64_t bytes) {
    return bytes <= reader->length - reader->position;
}

static bool Read(FontReader *reader, void *bytes, size_t size) {
    if (!HasBytes(reader, size) || fread(bytes, 1, size, reader->file) != size)
        return false;
    reader->position += size;
    return true;
}

static bool ReadWord(FontReader *reader, uint32_t *word) {
    uint8_t bytes[4];
    if (!Read(reader, bytes, sizeof bytes))
        return false;
    *word = LittleEndian32(bytes);
    return true;
}

// ---- Huffman tables ----

struct HuffCode {
    uint32_t aligned; // the code's bits from bit 31 down
    uint16_t length;
    uint16_t symbol;
};

// An offset from an entry to its child must fit a signed 16-bit number.
constexpr size_t kMaxChildOffset = 32767;

static HuffCode *ReadCodes(FontReader *reader, uint64_t offset, uint32_t *count) {
    constexpr size_t kEntryBytes = 4;
    if (!SeekTo(reader, offset) || !ReadWord(reader, count) ||
        !HasBytes(reader, uint64_t{*count} * kEntryBytes))
        return nullptr;
    const size_t bytes = *count * kEntryBytes;
    auto *raw = static_cast<uint8_t *>(malloc(bytes + 1)); // never 0 bytes
    auto *codes = static_cast<HuffCode *>(malloc(*count * sizeof(HuffCode) + 1));
    if (!raw || !codes || !Read(reader, raw, bytes)) {
        free(raw);
        free(codes);
        return nullptr;
    }
    for (uint32_t i = 0; i < *count; ++i)
        codes[i] = {0, LittleEndian16(raw + i * kEntryBytes + 2),
                    LittleEndian16(raw + i * kEntryBytes)};
    free(raw);
    return codes;
}

// Canonical codes in file order: the first is all zeros, each next one continues from the one
// before, with zeros appended where it is longer. They are prefix-free exactly when no length is
// smaller than the one before and the code space of 2^length is never exceeded: a shorter or
// wrapped code would be zeros again, a prefix of the first.
static bool AssignCodes(HuffCode *codes, uint32_t count) {
    uint64_t next = 0;
    uint32_t previousLength = 1;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t length = codes[i].length;
        if (length < previousLength || length > 32)
            return false;
        next <<= length - previousLength;
        if (next >> length)
            return false;
        codes[i].aligned = static_cast<uint32_t>(next << (32 - length));
        previousLength = length;
        ++next;
    }
    return true;
}

struct HuffBuilder {
    const HuffCode *codes;
    HuffLut *table;
    size_t size; // subtables
};

static bool AppendSubtable(HuffBuilder *builder) {
    auto *grown = static_cast<HuffLut *>(
        realloc(builder->table, (builder->size + 1) * sizeof *builder->table));
    if (!grown)
        return false;
    memset(&grown[builder->size], 0, sizeof *grown);
    builder->table = grown;
    ++builder->size;
    return true;
}

// The codes first..end - 1 are sorted and share the bits above this depth's four. A key that only
// one of them can match is a leaf, even if the code has bits beyond the key; a key that several
// match leads to a child. Children follow in the order of their keys, each with all it needs. With
// prefix-free codes of up to 32 bits the depth is at most 7, and the limit on offsets bounds the
// table whatever the file claims.
static bool AddHuffLutSubtable(HuffBuilder *builder, uint32_t first, uint32_t end, uint32_t depth) {
    const size_t own = builder->size;
    if (!AppendSubtable(builder))
        return false;
    const uint32_t shift = 28 - 4 * depth;
    for (uint32_t key = 0; key < 16 && first < end; ++key) {
        uint32_t next = first;
        while (next < end && (builder->codes[next].aligned >> shift & 15) == key)
            ++next;
        if (next == first)
            continue;
        HuffLutEntry *entry = &builder->table[own].entries[key];
        const HuffCode &code = builder->codes[first];
        if (next == first + 1) {
            const uint32_t bits = code.length - 4 * depth;
            // A code that ends within the key leaves its other bits free.
            const uint32_t keys = bits < 4 ? 1u << (4 - bits) : 1;
            for (uint32_t i = 0; i < keys; ++i)
                entry[i] = {static_cast<uint16_t>(bits), code.symbol};
        } else {
            const size_t offset = (builder->size - own) * 16 - key;
            if (offset > kMaxChildOffset)
                return false;
            *entry = {kChildSubtable, static_cast<uint16_t>(offset)};
            if (!AddHuffLutSubtable(builder, first, next, depth + 1))
                return false;
        }
        first = next;
    }
    return true;
}

HuffLut *LoadHuffTable(FontReader *reader, uint64_t offset) {
    uint32_t count = 0;
    HuffCode *codes = ReadCodes(reader, offset, &count);
    if (!codes)
        return nullptr;
    HuffBuilder builder = {codes, nullptr, 0};
    const bool built = AssignCodes(codes, count) && AddHuffLutSubtable(&builder, 0, count, 0);
    free(codes);
    if (built)
        return builder.table;
    free(builder.table);
    return nullptr;
}

int32_t WalkHuffLut(const HuffLut *lut, BitReader *reader) {
    const HuffLutEntry *entry = &lut->entries[PeekNibble(reader)];
    while (entry->bits == kChildSubtable) {
        reader->position += 4;
        entry += entry->value + PeekNibble(reader); // children lie after their parent
    }
    reader->position += entry->bits;
    return static_cast<int16_t>(entry->value);
}

// ---- The code-point index ----

// Slots up to the last code point of Unicode are an array, those beyond it (reachable by long UTF-8
// sequences) a list of what the file really fills: a count of 2^32 costs 4.25 MiB, not 16 GiB.
constexpr uint32_t kDenseSlots = 0x110000;
constexpr int32_t kIndexEndMark = -1;

static bool AddFarSlot(OrnMinRenderFont *font, uint32_t codePoint, uint32_t delta) {
    const uint32_t count = font->farCount;
    if ((count & (count - 1)) == 0) { // full at every power of two
        const size_t capacity = count ? size_t{count} * 2 : 1;
        auto *grown = static_cast<FarSlot *>(realloc(font->farSlots, capacity * sizeof(FarSlot)));
        if (!grown)
            return false;
        font->farSlots = grown;
    }
    font->farSlots[font->farCount++] = {codePoint, count, delta};
    return true;
}

static bool StoreSlot(OrnMinRenderFont *font, uint32_t codePoint, int32_t delta) {
    const auto word = static_cast<uint32_t>(delta);
    if (codePoint >= kDenseSlots)
        return AddFarSlot(font, codePoint, word);
    font->index[1 + codePoint] = word;
    return true;
}

// Fills slots from slot on with a record's deltas. Returns the first slot not filled, which is the
// index's count when all are. A symbol that needs bits past the record fills nothing and ends it; a
// walk that takes no bits would go on for ever, and sets *stuck.
static uint32_t DecodeIndexRecord(OrnMinRenderFont *font, const HuffLut *deltas,
                                  const uint8_t *bytes, uint32_t length, uint32_t slot,
                                  bool *stuck) {
    const uint32_t count = font->index[0];
    const uint64_t endBit = uint64_t{length} * 8;
    BitReader reader = {bytes, length, 0};
    while (slot < count) {
        const uint64_t before = reader.position;
        const int32_t delta = WalkHuffLut(deltas, &reader);
        *stuck = reader.position == before;
        if (*stuck || reader.position > endBit || delta == kIndexEndMark)
            break;
        if (!StoreSlot(font, slot, delta)) {
            *stuck = true;
            break;
        }
        ++slot;
    }
    return slot;
}

// Reads one record. False: the section ends here.
static bool ReadIndexRecord(FontReader *reader, OrnMinRenderFont *font, const HuffLut *deltas) {
    uint32_t slot = 0;
    uint32_t length = 0;
    if (!ReadWord(reader, &slot) || !ReadWord(reader, &length) || length == 0 ||
        !HasBytes(reader, length))
        return false;
    auto *bytes = static_cast<uint8_t *>(malloc(length));
    bool stuck = !bytes || !Read(reader, bytes, length);
    const uint32_t count = font->index[0];
    if (!stuck && slot < count)
        slot = DecodeIndexRecord(font, deltas, bytes, length, slot, &stuck);
    free(bytes);
    return !stuck && slot < count;
}

static int CompareFarSlots(const void *first, const void *second) {
    const auto *a = static_cast<const FarSlot *>(first);
    const auto *b = static_cast<const FarSlot *>(second);
    if (a->codePoint != b->codePoint)
        return a->codePoint < b->codePoint ? -1 : 1;
    return a->order < b->order ? -1 : 1;
}

// Sorts by code point and keeps the last slot of each.
static void SortFarSlots(OrnMinRenderFont *font) {
    if (font->farCount == 0)
        return;
    qsort(font->farSlots, font->farCount, sizeof(FarSlot), CompareFarSlots);
    uint32_t kept = 0;
    for (uint32_t i = 0; i < font->farCount; ++i) {
        if (kept > 0 && font->farSlots[kept - 1].codePoint == font->farSlots[i].codePoint)
            --kept;
        font->farSlots[kept++] = font->farSlots[i];
    }
    font->farCount = kept;
}

// Deltas become offsets: the sum of all that are not 0, in code-point order, modulo 2^32.
static void SumDeltas(OrnMinRenderFont *font) {
    uint32_t sum = 0;
    for (uint32_t c = 0; c < font->denseSlots; ++c)
        if (font->index[1 + c])
            font->index[1 + c] = sum += font->index[1 + c];
    for (uint32_t i = 0; i < font->farCount; ++i)
        if (font->farSlots[i].offset)
            font->farSlots[i].offset = sum += font->farSlots[i].offset;
}

// On failure the font stays without index, or with the slots read so far.
static void LoadIndex(FontReader *reader, OrnMinRenderFont *font, uint32_t offset) {
    uint32_t count = 0;
    if (!SeekTo(reader, offset) || !ReadWord(reader, &count))
        return;
    HuffLut *deltas = LoadHuffTable(reader, reader->position);
    if (!deltas)
        return;
    const auto denseSlots = static_cast<uint32_t>(Min(count, kDenseSlots));
    font->index = static_cast<uint32_t *>(calloc(size_t{denseSlots} + 2, sizeof(uint32_t)));
    if (font->index) {
        font->index[0] = count;
        font->denseSlots = denseSlots;
        while (ReadIndexRecord(reader, font, deltas)) {
        }
        SortFarSlots(font);
        SumDeltas(font);
    }
    free(deltas);
}

static uint32_t FindFarSlot(const OrnMinRenderFont *font, uint32_t codePoint) {
    uint32_t first = 0;
    uint32_t end = font->farCount;
    while (first < end) {
        const uint32_t middle = first + (end - first) / 2;
        if (font->farSlots[middle].codePoint < codePoint)
            first = middle + 1;
        else
            end = middle;
    }
    const bool found = first < font->farCount && font->farSlots[first].codePoint == codePoint;
    return found ? font->farSlots[first].offset : 0;
}

// ---- Loading and releasing a font ----

struct CbfHeader {
    uint32_t headerWord;
    int32_t lineHeight;
    uint32_t glyphDataSize;
    uint32_t tableOffsets[2]; // background, ink
    uint32_t indexOffset;
    uint32_t glyphDataOffset;
};

static bool ReadHeader(FontReader *reader, CbfHeader *header) {
    uint8_t bytes[28];
    if (!Read(reader, bytes, sizeof bytes))
        return false;
    *header = {LittleEndian32(bytes),      static_cast<int32_t>(LittleEndian32(bytes + 4)),
               LittleEndian32(bytes + 8),  {LittleEndian32(bytes + 12), LittleEndian32(bytes + 16)},
               LittleEndian32(bytes + 20), LittleEndian32(bytes + 24)};
    return true;
}

static bool LoadSections(FontReader *reader, OrnMinRenderFont *font) {
    CbfHeader header;
    if (!ReadHeader(reader, &header))
        return false;
    const uint64_t dataEnd = uint64_t{header.glyphDataOffset} + header.glyphDataSize;
    if (header.glyphDataSize == 0 || dataEnd > reader->length)
        return false;
    font->headerWord = header.headerWord;
    font->lineHeight = header.lineHeight;
    font->glyphDataSize = header.glyphDataSize;
    font->recordEnd =
        static_cast<uint32_t>(Max(0, int64_t{header.glyphDataSize} - kGlyphHeadBytes + 1));
    font->glyphData = static_cast<uint8_t *>(malloc(header.glyphDataSize));
    if (!font->glyphData)
        return false;
    for (int i = 0; i < 2; ++i)
        font->huffLuts[i] = LoadHuffTable(reader, header.tableOffsets[i]);
    LoadIndex(reader, font, header.indexOffset);
    return SeekTo(reader, header.glyphDataOffset) &&
           Read(reader, font->glyphData, header.glyphDataSize);
}

OrnMinRenderFont *OrnMinRenderLoadCbfFont(const char *path) {
    FontReader reader;
    if (!path || !OpenFont(&reader, path))
        return nullptr;
    auto *font = static_cast<OrnMinRenderFont *>(calloc(1, sizeof(OrnMinRenderFont)));
    if (font && !LoadSections(&reader, font)) {
        OrnMinRenderDestroyFont(font);
        font = nullptr;
    }
    fclose(reader.file);
    return font;
}

static void FlushGlyphCache(OrnMinRenderFont *font) {
    for (uint32_t i = 0; i < font->glyphCount; ++i) {
        free(font->glyphs[i].bitmap);
        free(font->glyphs[i].outline);
    }
    free(font->glyphs);
    font->glyphs = nullptr;
    font->glyphCount = 0;
    memset(font->buckets, 0, sizeof font->buckets);
}

void OrnMinRenderDestroyFont(OrnMinRenderFont *font) {
    if (!font)
        return;
    FlushGlyphCache(font);
    free(font->huffLuts[0]);
    free(font->huffLuts[1]);
    free(font->index);
    free(font->farSlots);
    free(font->glyphData);
    free(font);
}

int32_t OrnMinRenderTextInit(OrnMinRenderContext *) {
    return 0;
}

void OrnMinRenderSetFontDirection(OrnMinRenderFont *font, int32_t direction) {
    if (!font || font->direction == direction)
        return;
    font->direction = direction;
    FlushGlyphCache(font); // its bitmaps are turned for the old direction
}

// ---- Code points to glyphs ----

// Those outside the index are served by code point 0, if the index has any at all.
static uint32_t ResolveFarCodePoint(const OrnMinRenderFont *font, uint32_t codePoint) {
    return font->index && codePoint < font->index[0] ? codePoint : 0;
}

static inline uint32_t ResolveCodePoint(const OrnMinRenderFont *font, uint32_t codePoint) {
    return codePoint < font->denseSlots ? codePoint : ResolveFarCodePoint(font, codePoint);
}

// The record of a resolved code point, or null when the font has none inside its glyph data.
static inline const uint8_t *RecordOf(const OrnMinRenderFont *font, uint32_t codePoint) {
    if (font->denseSlots == 0)
        return nullptr;
    const uint32_t offset =
        codePoint < font->denseSlots ? font->index[1 + codePoint] : FindFarSlot(font, codePoint);
    return offset < font->recordEnd ? font->glyphData + offset : nullptr;
}

static inline const uint8_t *FindRecord(const OrnMinRenderFont *font, uint32_t codePoint) {
    return RecordOf(font, ResolveCodePoint(font, codePoint));
}

// Adds a decoded entry at the end of its chain. The array doubles whenever it is full, which it is
// at every power of two.
static OrnMinRenderGlyph *AddToCache(OrnMinRenderFont *font, const OrnMinRenderGlyph *glyph) {
    const uint32_t count = font->glyphCount;
    if ((count & (count - 1)) == 0) {
        const size_t capacity = count ? size_t{count} * 2 : 1;
        auto *grown = static_cast<OrnMinRenderGlyph *>(
            realloc(font->glyphs, capacity * sizeof(OrnMinRenderGlyph)));
        if (!grown)
            return nullptr;
        font->glyphs = grown;
    }
    uint32_t *link = &font->buckets[glyph->codePoint % 256];
    while (*link)
        link = &font->glyphs[*link - 1].next;
    *link = ++font->glyphCount;
    font->glyphs[count] = *glyph;
    return &font->glyphs[count];
}

// Decoded first and then added, so that nothing half-made ever enters the cache.
static OrnMinRenderGlyph *DecodeIntoCache(OrnMinRenderFont *font, uint32_t codePoint) {
    OrnMinRenderGlyph glyph = {};
    glyph.codePoint = codePoint;
    glyph.record = RecordOf(font, codePoint);
    if (!glyph.record || !RenderGlyph(font, &glyph))
        return nullptr;
    OrnMinRenderGlyph *entry = AddToCache(font, &glyph);
    if (!entry) {
        free(glyph.bitmap);
        free(glyph.outline);
    }
    return entry;
}

OrnMinRenderGlyph *GetGlyph(OrnMinRenderFont *font, uint32_t codePoint) {
    const uint32_t c = ResolveCodePoint(font, codePoint);
    for (uint32_t link = font->buckets[c % 256]; link; link = font->glyphs[link - 1].next)
        if (font->glyphs[link - 1].codePoint == c)
            return &font->glyphs[link - 1];
    return DecodeIntoCache(font, c);
}

// ---- Layout, shared by measuring and drawing ----

struct LeadByte {
    uint32_t continuations;
    uint32_t mask; // of the code point
};

// Of sequences of two to six bytes, as RFC 2279 has them.
static LeadByte ClassifyLeadByte(uint8_t lead) {
    if (lead >= 0xC0 && lead < 0xE0)
        return {1, 0x7FF};
    if (lead >= 0xE0 && lead < 0xF0)
        return {2, 0xFFFF};
    if (lead >= 0xF0 && lead < 0xF8)
        return {3, 0x1FFFFF};
    if (lead >= 0xF8 && lead < 0xFC)
        return {4, 0x3FFFFFF};
    if (lead >= 0xFC && lead < 0xFE)
        return {5, 0x7FFFFFFF};
    return {0, 0}; // no lead byte: ends the text, as a 0 does
}

static uint32_t DecodeSequence(const char **text) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(*text);
    const LeadByte lead = ClassifyLeadByte(bytes[0]);
    uint32_t codePoint = bytes[0];
    for (uint32_t i = 1; i <= lead.continuations; ++i) {
        if (bytes[i] == 0)
            return 0;
        codePoint = codePoint << 6 | (bytes[i] & 0x3F);
    }
    codePoint &= lead.mask;
    if (codePoint)
        *text += 1 + lead.continuations;
    return codePoint;
}

// Decodes the code point at *text and moves past it; 0, without moving, at the end of the text,
// which is also where a sequence is malformed or cut short by the terminator.
static inline uint32_t NextCodePoint(const char **text) {
    const char *at = *text;
    const auto first = static_cast<uint8_t>(*at);
    if (first >= 0x80) {
        const uint32_t codePoint = DecodeSequence(&at);
        *text = at;
        return codePoint;
    }
    *text = at + (first != 0);
    return first;
}

constexpr uint32_t kLineFeed = 10;

// The pen is passed by value, so that it stays in registers while a text is laid out.

static inline int32_t Moved(int32_t coordinate, int64_t step) {
    int32_t moved;
    if (__builtin_add_overflow(coordinate, step, &moved))
        return step < 0 ? INT32_MIN : INT32_MAX;
    return moved;
}

static OrnMinRenderPoint StartNewLine(const OrnMinRenderFont *font, OrnMinRenderPoint pen,
                                      int32_t lineStart) {
    const int64_t height = font->lineHeight;
    switch (font->direction) {
    case OrnMinRenderTextDirectionDown:
        return {Moved(pen.x, -height), lineStart};
    case OrnMinRenderTextDirectionUp:
        return {Moved(pen.x, height), lineStart};
    case OrnMinRenderTextDirectionInverted:
        return {lineStart, Moved(pen.y, -height)};
    default:
        return {lineStart, Moved(pen.y, height)};
    }
}

static OrnMinRenderPoint AdvanceTurned(OrnMinRenderPoint pen, int32_t direction, int64_t advance) {
    switch (direction) {
    case OrnMinRenderTextDirectionDown:
        return {pen.x, Moved(pen.y, advance)};
    case OrnMinRenderTextDirectionUp:
        return {pen.x, Moved(pen.y, -advance)};
    default:
        return {Moved(pen.x, -advance), pen.y};
    }
}

// In a direction other than the normal one; values that are none count as normal.
static inline bool IsTurned(int32_t direction) {
    return IsVertical(direction) || direction == OrnMinRenderTextDirectionInverted;
}

static inline OrnMinRenderPoint AdvancePen(const OrnMinRenderFont *font, OrnMinRenderPoint pen,
                                           int32_t advance) {
    if (IsTurned(font->direction))
        return AdvanceTurned(pen, font->direction, advance);
    return {Moved(pen.x, advance), pen.y};
}

// A box whose cells are turned about the pen point. The fields wrap as bytes do.
static OrnMinRenderGlyphBox TurnBox(OrnMinRenderGlyphBox box, int32_t direction) {
    const auto wrap = [](int32_t value) { return static_cast<int8_t>(value); };
    switch (direction) {
    case OrnMinRenderTextDirectionDown:
        return {box.height, box.width, wrap(box.bearingY - box.height), wrap(-box.bearingX)};
    case OrnMinRenderTextDirectionUp:
        return {box.height, box.width, wrap(-box.bearingY), wrap(box.bearingX + box.width)};
    default:
        return {box.width, box.height, wrap(-(box.bearingX + box.width)),
                wrap(box.height - box.bearingY)};
    }
}

// The box of a record as it stands in the font's direction.
static inline OrnMinRenderGlyphBox RotateBoundingBox(const uint8_t *record, int32_t direction) {
    const OrnMinRenderGlyphBox box = UprightBox(record);
    return IsTurned(direction) ? TurnBox(box, direction) : box;
}

// ---- Measuring ----

// The rectangle so far, not yet cut to int32.
struct Bounds {
    int64_t left;
    int64_t top;
    int64_t right;
    int64_t bottom;
};

static inline void Extend(Bounds *bounds, OrnMinRenderPoint pen, OrnMinRenderGlyphBox box) {
    const int64_t left = int64_t{pen.x} + box.bearingX;
    const int64_t top = int64_t{pen.y} - box.bearingY;
    bounds->left = Min(bounds->left, left);
    bounds->top = Min(bounds->top, top);
    bounds->right = Max(bounds->right, left + box.width);
    bounds->bottom = Max(bounds->bottom, top + box.height);
}

// Lays the text out and moves the pen; returns what its glyphs and the first pen point cover.
static Bounds MeasureText(const OrnMinRenderFont *font, const char *text, OrnMinRenderPoint *pen,
                          int32_t lineStart) {
    OrnMinRenderPoint at = *pen;
    Bounds bounds = {at.x, at.y, at.x, at.y};
    while (const uint32_t codePoint = NextCodePoint(&text)) {
        if (codePoint == kLineFeed) {
            at = StartNewLine(font, at, lineStart);
        } else if (const uint8_t *record = FindRecord(font, codePoint)) {
            Extend(&bounds, at, RotateBoundingBox(record, font->direction));
            at = AdvancePen(font, at, GlyphAdvance(record));
        }
    }
    *pen = at;
    return bounds;
}

void OrnMinRenderGetTextRect(OrnMinRenderContext *, const OrnMinRenderFont *font, const char *text,
                             OrnMinRenderPoint *pen, int32_t lineStart, OrnMinRenderRect *rect) {
    if (!rect || !pen)
        return;
    *rect = {pen->x, pen->y, pen->x, pen->y};
    if (!text || !font)
        return;
    const Bounds bounds = MeasureText(font, text, pen, lineStart);
    *rect = {Saturate(bounds.left), Saturate(bounds.top), Saturate(bounds.right),
             Saturate(bounds.bottom)};
}

// ---- Fitting to a width ----

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

// ---- Drawing ----

// A glyph's fill or outline at its place.
struct PlacedBitmap {
    OrnMinRenderGlyphBox box;
    const uint32_t *bitmap; // null: nothing to draw
    uint32_t words;
    OrnMinRenderPoint pen;
};

// Most glyphs are at most a word wide and lie wholly inside the frame: those need no clipping.
static inline bool DrawInside(const PlacedBitmap &placed, const OrnMinRenderImage *image,
                              int32_t luma) {
    const int32_t width = placed.box.width;
    const int32_t height = placed.box.height;
    const int64_t x0 = int64_t{placed.pen.x} + placed.box.bearingX;
    const int64_t y0 = int64_t{placed.pen.y} - placed.box.bearingY;
    const bool inside = x0 >= 0 && y0 >= 0 && x0 + width <= image->width &&
                        y0 + height <= image->height && image->yPlane;
    const bool narrow = width > 0 && width <= 32 && height <= int64_t{placed.words};
    if (!inside || !narrow)
        return false;
    PaintNarrowMask(LumaRow(image, y0) + static_cast<ptrdiff_t>(x0), image->stride, placed.bitmap,
                    height, BitRange(0, width), LumaPattern(static_cast<uint8_t>(luma)));
    return true;
}

static inline void DrawPlaced(const PlacedBitmap &placed, const OrnMinRenderImage *image,
                              int32_t luma) {
    if (placed.bitmap && !DrawInside(placed, image, luma))
        OrnMinRenderTextBitmap(&placed.box, placed.bitmap, placed.words, image, &placed.pen, luma);
}

// The place of a glyph's outline, whose bitmap is larger and starts further left and higher.
static inline PlacedBitmap PlaceOutline(const OrnMinRenderGlyph *glyph, const PlacedBitmap &fill) {
    const auto wrap = [](int32_t value) { return static_cast<int8_t>(value); };
    const OrnMinRenderGlyphBox box = {wrap(fill.box.width + 5), wrap(fill.box.height + 5),
                                      wrap(fill.box.bearingX - 3), wrap(fill.box.bearingY + 2)};
    return {box, glyph->outline, glyph->outlineWords, fill.pen};
}

void OrnMinRenderDrawTextY8(OrnMinRenderContext *, const OrnMinRenderImage *image,
                            OrnMinRenderFont *font, const char *text, OrnMinRenderPoint *pen,
                            int32_t lineStart, uint8_t luma) {
    if (!text || !image || !font || !pen)
        return;
    OrnMinRenderPoint at = *pen;
    while (const uint32_t codePoint = NextCodePoint(&text)) {
        if (codePoint == kLineFeed) {
            at = StartNewLine(font, at, lineStart);
        } else if (const OrnMinRenderGlyph *glyph = GetGlyph(font, codePoint)) {
            const OrnMinRenderGlyphBox box = RotateBoundingBox(glyph->record, font->direction);
            DrawPlaced({box, glyph->bitmap, glyph->bitmapWords, at}, image, luma);
            at = AdvancePen(font, at, GlyphAdvance(glyph->record));
        }
    }
    *pen = at;
}

// A fill is held back until the outline of the next glyph is drawn, so that it lies on top.
void OrnMinRenderDrawOutlineTextY8(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                   OrnMinRenderFont *font, const char *text, OrnMinRenderPoint *pen,
                                   int32_t lineStart, uint8_t outline, int32_t fill) {
    if (!text || !image || !font || !pen)
        return;
    OrnMinRenderPoint at = *pen;
    PlacedBitmap pending = {};
    while (const uint32_t codePoint = NextCodePoint(&text)) {
        if (codePoint == kLineFeed) {
            at = StartNewLine(font, at, lineStart);
        } else if (const OrnMinRenderGlyph *glyph = GetGlyph(font, codePoint)) {
            const OrnMinRenderGlyphBox box = RotateBoundingBox(glyph->record, font->direction);
            const PlacedBitmap current = {box, glyph->bitmap, glyph->bitmapWords, at};
            DrawPlaced(PlaceOutline(glyph, current), image, outline);
            DrawPlaced(pending, image, fill);
            pending = current;
            at = AdvancePen(font, at, GlyphAdvance(glyph->record));
        }
    }
    DrawPlaced(pending, image, fill);
    *pen = at;
}
