// The innermost loops: rows, spans and masks painted in one colour, and the bits of bitmaps put in
// the order of a mask. Each has a plain routine, and beside it one for AVX-512, whose masked stores
// write the bytes of a run, or the set bits of a mask, and nothing else. The functions at the end
// choose.
#include "pixop.h"

// ---- Plain ----

// Above this many bytes, string instructions are the fastest: they need not read what they replace.
constexpr ptrdiff_t kHugeRun = 16384;

static void FillHugeRun(uint8_t *first, ptrdiff_t bytes, Pattern pattern) {
#if defined(__x86_64__) && defined(__GNUC__)
    void *to = first;
    ptrdiff_t words = bytes / 8;
    __asm__ volatile("rep stosq" : "+D"(to), "+c"(words) : "a"(pattern.bytes) : "memory");
    StorePattern<8>(first + bytes - 8, pattern);
#else
    FillRun(first, bytes, pattern);
#endif
}

constexpr ptrdiff_t kLongRun = 128;

// Long runs of one byte are what the C library does best.
static void FillAnyRun(uint8_t *first, ptrdiff_t bytes, Pattern pattern) {
    const auto byte = static_cast<uint8_t>(pattern.bytes);
    if (bytes < kLongRun)
        FillRun(first, bytes, pattern);
    else if (pattern.bytes == LumaPattern(byte).bytes)
        memset(first, byte, static_cast<size_t>(bytes));
    else if (bytes < kHugeRun)
        FillRun(first, bytes, pattern);
    else
        FillHugeRun(first, bytes, pattern);
}

// Rows of 16 to 32 bytes: one or two stores each.
static void FillShortRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,
                          Pattern pattern) {
    const ptrdiff_t second = bytes - 16;
    for (; rows > 0; --rows, first += stride) {
        StorePattern<16>(first, pattern);
        if (second > 0)
            StorePattern<16>(first + second, pattern);
    }
}

void FillRowsPlain(uint8_t *first, int64_t stride, int64_t rows, ptrdiff_t bytes, Pattern pattern) {
    if (bytes >= 16 && bytes <= 32) {
        FillShortRows(first, static_cast<ptrdiff_t>(stride), rows, bytes, pattern);
        return;
    }
    for (int64_t row = 0; row < rows; ++row)
        FillAnyRun(first + static_cast<ptrdiff_t>(row * stride), bytes, pattern);
}

static uint8_t *SpanStart(const Plane &plane, const OrnMinRenderScanline &span) {
    return plane.first + static_cast<ptrdiff_t>(span.start.y * plane.stride) +
           span.start.x * plane.sampleBytes;
}

static ptrdiff_t SpanBytes(const Plane &plane, const OrnMinRenderScanline &span) {
    return (ptrdiff_t{span.end.x} - span.start.x) * plane.sampleBytes;
}

void PaintSpansPlain(const Plane &plane, const OrnMinRenderScanline *spans, int32_t count,
                     Pattern pattern) {
    for (int32_t i = 0; i < count; ++i)
        FillAnyRun(SpanStart(plane, spans[i]), SpanBytes(plane, spans[i]), pattern);
}

static void BlendRun(uint8_t *first, ptrdiff_t bytes, Pattern pattern) {
    constexpr uint64_t kUpperBits = 0xFEFEFEFEFEFEFEFE;
    ptrdiff_t i = 0;
    for (; i + 8 <= bytes; i += 8) {
        uint64_t old;
        memcpy(&old, first + i, sizeof old);
        // a + b = 2 (a & b) + (a ^ b), halved in each byte on its own
        const uint64_t average = (old & pattern.bytes) + ((old ^ pattern.bytes) & kUpperBits) / 2;
        memcpy(first + i, &average, sizeof average);
    }
    const auto *pair = reinterpret_cast<const uint8_t *>(&pattern);
    for (; i < bytes; ++i)
        first[i] = static_cast<uint8_t>((first[i] + pair[i % 2]) / 2);
}

// A run of equal bytes, 1 at least. Short ones are most of what text consists of; three stores,
// which may coincide, need no branch for each length.
static inline void FillLumaRun(uint8_t *first, int length, Pattern pattern) {
    if (length > 3) {
        FillRun(first, length, pattern);
        return;
    }
    StorePattern<1>(first, pattern);
    StorePattern<1>(first + length / 2, pattern);
    StorePattern<1>(first + length - 1, pattern);
}

struct BitRun {
    int start;
    int length;
};

// Takes the lowest run of set bits out of a word that is not 0.
static inline BitRun TakeRun(uint32_t *word) {
    const int start = __builtin_ctz(*word);
    const uint32_t above = ~(*word >> start);
    const int length = above ? __builtin_ctz(above) : 32;
    *word &= *word + (*word & -*word); // the carry clears the run
    return {start, length};
}

static inline void PaintLumaWord(uint8_t *first, uint32_t word, Pattern pattern) {
    while (word) {
        const BitRun run = TakeRun(&word);
        FillLumaRun(first + run.start, run.length, pattern);
    }
}

static void PaintWordPlain(uint8_t *first, uint32_t word, const Ink &ink) {
    while (word) {
        const BitRun run = TakeRun(&word);
        uint8_t *bytes = first + run.start * ink.sampleBytes;
        if (ink.half)
            BlendRun(bytes, run.length * ink.sampleBytes, ink.pattern);
        else
            FillRun(bytes, run.length * ink.sampleBytes, ink.pattern);
    }
}

void PaintMaskPlain(uint8_t *first, int64_t stride, const Mask &mask, const Ink &ink) {
    const ptrdiff_t wordBytes = 32 * ink.sampleBytes;
    for (int32_t row = 0; row < mask.rows; ++row) {
        const uint32_t *words = mask.words + row * ptrdiff_t{mask.pitch};
        uint8_t *samples = first + static_cast<ptrdiff_t>(row * stride);
        for (int32_t i = 0; i < mask.wordsPerRow; ++i) {
            const uint32_t word = words[i] & EdgeBits(mask, i);
            if (ink.sampleBytes == 1 && !ink.half)
                PaintLumaWord(samples + i * wordBytes, word, ink.pattern);
            else
                PaintWordPlain(samples + i * wordBytes, word, ink);
        }
    }
}

__attribute__((noinline)) void PaintNarrowMaskPlain(uint8_t *first, ptrdiff_t stride,
                                                    const uint32_t *words, int32_t rows,
                                                    uint32_t columns, Pattern pattern) {
    for (int32_t row = 0; row < rows; ++row, first += stride)
        PaintLumaWord(first, words[row] & columns, pattern);
}

static inline uint64_t SourceColumns(const uint32_t *row, const BitSource &source) {
    const uint64_t two = uint64_t{row[source.words[0]]} << 32 | row[source.words[1]];
    const uint64_t third = row[source.words[2]];
    return two << source.shift | third >> (32 - source.shift);
}

static uint32_t ReverseBits(uint32_t word) {
    word = (word >> 1 & 0x55555555) | (word & 0x55555555) << 1;
    word = (word >> 2 & 0x33333333) | (word & 0x33333333) << 2;
    word = (word >> 4 & 0x0F0F0F0F) | (word & 0x0F0F0F0F) << 4;
    return __builtin_bswap32(word);
}

// The odd bits, closed up.
static uint32_t EveryOtherBit(uint64_t bits) {
    bits = bits >> 1 & 0x5555555555555555;
    bits = (bits | bits >> 1) & 0x3333333333333333;
    bits = (bits | bits >> 2) & 0x0F0F0F0F0F0F0F0F;
    bits = (bits | bits >> 4) & 0x00FF00FF00FF00FF;
    bits = (bits | bits >> 8) & 0x0000FFFF0000FFFF;
    return static_cast<uint32_t>(bits | bits >> 16);
}

static uint32_t GatherWordPlain(const uint32_t *row, const BitSource &source) {
    const uint64_t columns = SourceColumns(row, source);
    if (source.spacing == 1)
        return ReverseBits(static_cast<uint32_t>(columns >> 32));
    if (source.spacing == 2)
        return ReverseBits(EveryOtherBit(columns));
    uint32_t word = 0;
    for (int32_t k = 0; k < 32; ++k)
        word |= static_cast<uint32_t>(columns >> source.places[k] & 1) << k;
    return word;
}

void GatherBitsPlain(uint32_t *to, int32_t pitch, const uint32_t *const *rows, int32_t rowCount,
                     const BitSource *sources, int32_t count) {
    for (int32_t row = 0; row < rowCount; ++row, to += pitch)
        for (int32_t i = 0; i < count; ++i)
            to[i] = GatherWordPlain(rows[row], sources[i]);
}

// ---- AVX-512 ----

#if defined(__x86_64__) && defined(__GNUC__) && !defined(ORN_PLAIN_STORES)
#include <immintrin.h>

#define ORN_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl")))

#define ORN_INLINE __attribute__((always_inline)) inline

// Chosen at run time, once for a whole call.
static bool HasAvx512() {
    return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
}

ORN_AVX512 static __m512i Broadcast(Pattern pattern) {
    return _mm512_set1_epi64(static_cast<int64_t>(pattern.bytes));
}

// A colour for stores at even and at odd addresses: they differ for chroma.
struct WideColour {
    __m512i even;
    __m512i odd;
};

ORN_AVX512 static ORN_INLINE WideColour MakeWideColour(Pattern pattern) {
    return {Broadcast(pattern), Broadcast({pattern.bytes >> 8 | pattern.bytes << 56})};
}

// The first and the last store are masked; all lie within cache lines.
ORN_AVX512 static ORN_INLINE void FillRunAvx512(uint8_t *first, ptrdiff_t bytes,
                                                const WideColour &wide) {
    if (bytes <= 0)
        return;
    const auto offset = static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(first) % 64);
    const __m512i colour = offset % 2 ? wide.odd : wide.even;
    uint8_t *const line = first - offset;
    const ptrdiff_t end = offset + bytes;
    const uint64_t head = ~uint64_t{0} << offset;
    const uint64_t tail = ~uint64_t{0} >> (-end & 63);
    if (end <= 64) {
        _mm512_mask_storeu_epi8(line, head & tail, colour);
        return;
    }
    _mm512_mask_storeu_epi8(line, head, colour);
    ptrdiff_t i = 64;
    for (; i + 64 < end; i += 64)
        _mm512_store_si512(line + i, colour);
    _mm512_mask_storeu_epi8(line + i, tail, colour);
}

ORN_AVX512 static void FillRowsAvx512(uint8_t *first, int64_t stride, int64_t rows, ptrdiff_t bytes,
                                      Pattern pattern) {
    const WideColour colour = MakeWideColour(pattern);
    for (int64_t row = 0; row < rows; ++row)
        FillRunAvx512(first + static_cast<ptrdiff_t>(row * stride), bytes, colour);
}

ORN_AVX512 static void PaintSpansAvx512(const Plane plane, const OrnMinRenderScanline *spans,
                                        int32_t count, Pattern pattern) {
    const WideColour colour = MakeWideColour(pattern);
    for (int32_t i = 0; i < count; ++i)
        FillRunAvx512(SpanStart(plane, spans[i]), SpanBytes(plane, spans[i]), colour);
}

// Rounded down, where the instruction rounds up.
ORN_AVX512 static ORN_INLINE __m512i Average(__m512i a, __m512i b) {
    const __m512i odd = _mm512_and_si512(_mm512_xor_si512(a, b), _mm512_set1_epi8(1));
    return _mm512_sub_epi8(_mm512_avg_epu8(a, b), odd);
}

// The samples whose bits are set, of 64 luma or 32 chroma samples.
template <bool luma, bool half>
ORN_AVX512 static ORN_INLINE void PaintBits(uint8_t *first, uint64_t bits, __m512i colour) {
    if (luma) {
        const __m512i bytes = half ? Average(_mm512_maskz_loadu_epi8(bits, first), colour) : colour;
        _mm512_mask_storeu_epi8(first, bits, bytes);
    } else {
        const auto samples = static_cast<uint32_t>(bits);
        const __m512i bytes =
            half ? Average(_mm512_maskz_loadu_epi16(samples, first), colour) : colour;
        _mm512_mask_storeu_epi16(first, samples, bytes);
    }
}

ORN_AVX512 static ORN_INLINE uint64_t TwoWords(const uint32_t *words) {
    uint64_t both;
    memcpy(&both, words, sizeof both);
    return both;
}

// Paints strips of 64 bytes, which are two words of luma or one of chroma. The mask's fields are
// read once: a byte stored could change them, as far as a compiler knows.
template <bool luma, bool half>
ORN_AVX512 static void PaintStrips(uint8_t *first, ptrdiff_t stride, const Mask &mask,
                                   Pattern pattern) {
    const __m512i colour = Broadcast(pattern);
    constexpr int32_t kWords = luma ? 2 : 1;
    const ptrdiff_t pitch = mask.pitch;
    const int32_t rows = mask.rows;
    const int32_t last = (mask.wordsPerRow - 1) / kWords;
    const bool lastIsWhole = mask.wordsPerRow % kWords == 0;
    const uint64_t firstBits = uint64_t{0xFFFFFFFF} << 32 | mask.firstWordBits;
    const uint64_t lastBits =
        luma && lastIsWhole ? uint64_t{mask.lastWordBits} << 32 | 0xFFFFFFFF : mask.lastWordBits;
    const uint32_t *words = mask.words;
    for (int32_t i = 0; i <= last; ++i, words += kWords, first += 64) {
        const bool two = luma && (i < last || lastIsWhole);
        const uint64_t edge =
            (i == 0 ? firstBits : ~uint64_t{0}) & (i == last ? lastBits : ~uint64_t{0});
        const uint32_t *from = words;
        uint8_t *to = first;
        for (int32_t row = 0; row < rows; ++row, from += pitch, to += stride)
            PaintBits<luma, half>(to, (two ? TwoWords(from) : *from) & edge, colour);
    }
}

static void PaintMaskAvx512(uint8_t *first, int64_t stride, const Mask &mask, const Ink &ink) {
    const bool luma = ink.sampleBytes == 1;
    const auto pitch = static_cast<ptrdiff_t>(stride);
    if (luma && !ink.half)
        PaintStrips<true, false>(first, pitch, mask, ink.pattern);
    else if (luma)
        PaintStrips<true, true>(first, pitch, mask, ink.pattern);
    else if (!ink.half)
        PaintStrips<false, false>(first, pitch, mask, ink.pattern);
    else
        PaintStrips<false, true>(first, pitch, mask, ink.pattern);
}

// Stores of 16 bytes cross fewer borders of cache lines than wider ones do.
ORN_AVX512 static void PaintNarrowMaskAvx512(uint8_t *first, ptrdiff_t stride,
                                             const uint32_t *words, int32_t rows, uint32_t columns,
                                             Pattern pattern) {
    const __m256i colour = _mm256_set1_epi64x(static_cast<int64_t>(pattern.bytes));
    if (columns <= 0xFFFF) {
        const __m128i half = _mm256_castsi256_si128(colour);
        for (int32_t row = 0; row < rows; ++row, first += stride)
            _mm_mask_storeu_epi8(first, static_cast<__mmask16>(words[row] & columns), half);
        return;
    }
    for (int32_t row = 0; row < rows; ++row, first += stride)
        _mm256_mask_storeu_epi8(first, words[row] & columns, colour);
}

// The bits become lanes, which are put in order and become bits again.
ORN_AVX512 static ORN_INLINE uint32_t GatherWord(const uint32_t *row, const BitSource &source) {
    const uint64_t columns = SourceColumns(row, source);
    const __m512i right = _mm512_movm_epi16(static_cast<uint32_t>(columns));
    const __m512i left = _mm512_movm_epi16(static_cast<uint32_t>(columns >> 32));
    const __m512i places = _mm512_loadu_si512(source.places);
    return _mm512_movepi16_mask(_mm512_permutex2var_epi16(right, places, left));
}

// 64 neighbouring columns, in the order of a mask.
ORN_AVX512 static ORN_INLINE uint64_t ReverseColumns(uint64_t columns) {
    const __m128i backwards = _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    const __m512i lanes =
        _mm512_shuffle_epi8(_mm512_movm_epi8(columns), _mm512_broadcast_i32x4(backwards));
    return _mm512_movepi8_mask(_mm512_shuffle_i64x2(lanes, lanes, _MM_SHUFFLE(0, 1, 2, 3)));
}

// Word by word, or by two words where the bitmap keeps its width.
ORN_AVX512 static void GatherBitsAvx512(uint32_t *to, int32_t pitch, const uint32_t *const *rows,
                                        int32_t rowCount, const BitSource *sources, int32_t count) {
    for (int32_t i = 0; i < count;) {
        const BitSource source = sources[i];
        const bool two = source.spacing == 1 && i + 1 < count;
        uint32_t *word = to + i;
        for (int32_t row = 0; row < rowCount; ++row, word += pitch) {
            if (two) {
                const uint64_t both = ReverseColumns(SourceColumns(rows[row], source));
                memcpy(word, &both, sizeof both);
            } else {
                *word = GatherWord(rows[row], source);
            }
        }
        i += two ? 2 : 1;
    }
}

#else

static bool HasAvx512() {
    return false;
}

// Never called.
#define FillRowsAvx512 FillRowsPlain
#define PaintSpansAvx512 PaintSpansPlain
#define PaintMaskAvx512 PaintMaskPlain
#define PaintNarrowMaskAvx512 PaintNarrowMaskPlain
#define GatherBitsAvx512 GatherBitsPlain

#endif

// ---- The choice: wide registers do not pay for little work ----

constexpr ptrdiff_t kShortRun = 32;
constexpr int32_t kFewSpans = 24;

void FillRows(uint8_t *first, int64_t stride, int64_t rows, int64_t bytes, Pattern pattern) {
    if (bytes == stride) { // no gap between the rows
        bytes *= rows;
        rows = 1;
    }
    const auto length = static_cast<ptrdiff_t>(bytes);
    const bool wide = length > kShortRun && length < kHugeRun && HasAvx512();
    if (wide)
        FillRowsAvx512(first, stride, rows, length, pattern);
    else
        FillRowsPlain(first, stride, rows, length, pattern);
}

void PaintSpans(const Plane &plane, const OrnMinRenderScanline *spans, int32_t count,
                Pattern pattern) {
    if (count > kFewSpans && HasAvx512())
        PaintSpansAvx512(plane, spans, count, pattern);
    else
        PaintSpansPlain(plane, spans, count, pattern);
}

void PaintMask(uint8_t *first, int64_t stride, const Mask &mask, const Ink &ink) {
    if (HasAvx512())
        PaintMaskAvx512(first, stride, mask, ink);
    else
        PaintMaskPlain(first, stride, mask, ink);
}

void PaintNarrowMask(uint8_t *first, int64_t stride, const uint32_t *words, int32_t rows,
                     uint32_t columns, Pattern pattern) {
    if (HasAvx512())
        PaintNarrowMaskAvx512(first, static_cast<ptrdiff_t>(stride), words, rows, columns, pattern);
    else
        PaintNarrowMaskPlain(first, static_cast<ptrdiff_t>(stride), words, rows, columns, pattern);
}

bool GathersWide() {
    return HasAvx512();
}

void GatherBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows, int32_t rowCount,
                const BitSource *sources, int32_t count) {
    if (HasAvx512())
        GatherBitsAvx512(to, pitch, rows, rowCount, sources, count);
    else
        GatherBitsPlain(to, pitch, rows, rowCount, sources, count);
}
