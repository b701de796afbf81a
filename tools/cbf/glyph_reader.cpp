// SPDX-License-Identifier: MIT
// A record's head, then its runs, which never write more pixels than the box has: so the time of a
// glyph is bounded by its box and its bits.
#include "cbf/glyph_reader.h"

#include "cbf.h"
#include "cbf/glyph_record.h"

#include <algorithm>
#include <string_view>

namespace cbf {

namespace {

// Decodes the runs of one record.
class RunReader {
  public:
    RunReader(const View &file, const FontFile &fontFile, uint64_t first, uint64_t codedBits,
              StoredGlyph &storedGlyph)
        : reader{file, first, fontFile.dataOffset + fontFile.dataSize, 0}, bitCount(codedBits),
          font(fontFile), stored(storedGlyph) {
    }

    void Read(size_t pixelCount) {
        std::vector<uint8_t> &pixels = stored.glyph.pixels;
        pixels.reserve(pixelCount);
        for (size_t colour = 0; pixels.size() < pixelCount; colour = 1 - colour) {
            const size_t left = pixelCount - pixels.size();
            const bool rest = reader.position >= bitCount;
            const std::optional<uint16_t> run = rest ? std::nullopt : ReadRun(colour);
            if (run && *run > left)
                Complain(Flaw::LongRun, [&] {
                    return "a run of " + std::to_string(*run) + " exceeds the " +
                           std::to_string(left) + " pixels that are left";
                });
            const size_t length = run ? std::min<size_t>(*run, left) : left;
            const bool ink = colour == 1 && (run || rest);
            pixels.resize(pixels.size() + length, ink);
        }
        if (reader.position > bitCount)
            Complain(Flaw::PastBitCount,
                     [] { return std::string("the last code reaches past the bit count"); });
    }

  private:
    template <typename Text> void Complain(Flaw flaw, Text text) {
        stored.complaints.Add(reader.ByteOffset(), flaw, text);
    }

    // None where the rest of the glyph is background: without a table, and where no bits are taken
    // twice in turn, for each colour once.
    std::optional<uint16_t> ReadRun(size_t colour) {
        ++stored.runs;
        const Table &table = font.runTables[colour];
        const char *title = kRunTableTitles[colour];
        if (!table.usable) {
            Complain(Flaw::MissingTable, [=] { return std::string("needs the ") + title; });
            return {};
        }
        const bool stuckBefore = stuck;
        const uint64_t offset = reader.ByteOffset();
        const Walk walk = TakeCode(table, reader);
        stuck = walk.bits == 0;
        if (!walk.fits)
            stored.complaints.Add(offset, Flaw::RunCode, [&] {
                return std::string("no code of the ") + title +
                       " fits: " + std::to_string(walk.bits) + " bits are read as a run of " +
                       std::to_string(walk.symbol);
            });
        if (stuck && stuckBefore)
            return {};
        return walk.symbol;
    }

    BitReader reader;
    const uint64_t bitCount;
    const FontFile &font;
    StoredGlyph &stored;
    bool stuck = false; // the last code took no bits
};

void ReadHead(const View &file, uint64_t offset, Glyph &glyph) {
    const auto signedByte = [&](uint64_t i) {
        return static_cast<int8_t>(ByteAt(file, offset + i));
    };
    glyph.width = signedByte(0);
    glyph.height = signedByte(1);
    glyph.bearingX = signedByte(2);
    glyph.bearingY = signedByte(3);
    glyph.advance = static_cast<int16_t>(HalfAt(file, offset + kGlyphAdvanceAt));
}

} // namespace

StoredGlyph ReadGlyph(const View &file, const FontFile &font, uint32_t recordOffset) {
    StoredGlyph stored;
    const uint64_t start = font.dataOffset + recordOffset;
    const auto complain = [&](Flaw flaw, std::string_view text) {
        stored.complaints.Add(start, flaw, [=] { return std::string(text); });
    };
    stored.whole = uint64_t{recordOffset} + kGlyphHeadBytes <= font.dataSize;
    if (!stored.whole)
        return stored;
    Glyph &glyph = stored.glyph;
    ReadHead(file, start, glyph);
    const auto bitCount = static_cast<int16_t>(HalfAt(file, start + kGlyphBitCountAt));
    if (bitCount < 0)
        stored.complaints.Add(start, Flaw::BitCount,
                              [=] { return "has a bit count of " + std::to_string(bitCount); });
    const auto bits = static_cast<size_t>(std::max<int16_t>(bitCount, 0));
    stored.codedBytes = (bits + 7) / 8;
    stored.paddingBits = 8 * stored.codedBytes - bits;
    if (recordOffset + kGlyphHeadBytes + stored.codedBytes > font.dataSize)
        complain(Flaw::RunsPastData, "its coded runs reach past the glyph data");
    if (glyph.width > 0 && glyph.height > 0)
        RunReader(file, font, start + kGlyphHeadBytes, bits, stored)
            .Read(static_cast<size_t>(glyph.width * glyph.height));
    if (const Problem problem = CheckGlyph(glyph); problem != Problem::None)
        complain(Flaw::Box,
                 problem == Problem::Size ? "has a negative width or height" : Reason(problem));
    else if (OutlineWraps(glyph))
        complain(Flaw::Outline, "reaches further than 125 pixels from the pen, so that its outline "
                                "is drawn 256 pixels away");
    return stored;
}

void ForEachRecord(const View &file, const FontFile &font,
                   const std::function<void(const NamedGlyph &)> &use) {
    if (!font.loads)
        return;
    std::vector<bool> seen(static_cast<size_t>(font.dataSize));
    const auto isNew = [&](uint32_t offset) {
        if (offset >= seen.size())
            return true; // there is nothing to read, so no time to lose
        const bool first = !seen[offset];
        seen[offset] = true;
        return first;
    };
    isNew(0);
    use({{}, 0, ReadGlyph(file, font, 0)});
    for (const IndexEntry &entry : font.index.entries)
        if (isNew(entry.offset))
            use({entry.codePoint, entry.offset, ReadGlyph(file, font, entry.offset)});
}

} // namespace cbf
