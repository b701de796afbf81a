#include "cbf_reader.h"

#include "code_points.h"

#include <algorithm>
#include <optional>
#include <set>

namespace cbf {

constexpr uint64_t kHeaderBytes = 28;
constexpr uint64_t kGlyphHeadBytes = 8;
constexpr uint64_t kRecordHeadBytes = 8; // of the index
constexpr uint16_t kEndMark = 0xFFFF;

static std::string Number(uint64_t number) {
    return std::to_string(number);
}

// ---- Bytes and bits ----

// The callers have checked that the bytes are there.
static uint8_t Byte(const Bytes &file, uint64_t offset) {
    return file[static_cast<size_t>(offset)];
}

static uint16_t Half(const Bytes &file, uint64_t offset) {
    return static_cast<uint16_t>(Byte(file, offset) | Byte(file, offset + 1) << 8);
}

static uint32_t Word(const Bytes &file, uint64_t offset) {
    return Half(file, offset) | uint32_t{Half(file, offset + 2)} << 16;
}

static bool Holds(const Bytes &file, uint64_t offset, uint64_t bytes) {
    return offset <= file.size() && bytes <= file.size() - offset;
}

// Bits from the most significant one of a byte on. Those past the end are 0.
struct BitReader {
    const Bytes &file;
    uint64_t first; // byte
    uint64_t end;
    uint64_t position; // bits from the first byte on

    uint32_t Next() {
        const uint64_t byte = first + position / 8;
        const uint32_t bit = byte < end ? Byte(file, byte) >> (7 - position % 8) & 1u : 0;
        ++position;
        return bit;
    }
};

// ---- Tables ----

// Decodes canonical codes that are sorted by length: those of one length follow each other. An
// unusable table has none that can be relied on.
class Decoder {
  public:
    explicit Decoder(const Table &table) : codes(table.codes) {
        if (!table.usable)
            return;
        for (size_t i = codes.size(); i-- > 0;)
            firstOfLength[codes[i].length] = i;
        for (const Code &code : codes)
            ++countOfLength[code.length];
    }

    // Nothing, without moving, where no code fits.
    std::optional<uint16_t> Next(BitReader *reader) const {
        const uint64_t start = reader->position;
        uint32_t bits = 0;
        for (size_t length = 1; length <= 32; ++length) {
            bits = bits << 1 | reader->Next();
            const size_t first = firstOfLength[length];
            if (countOfLength[length] > 0 && bits >= codes[first].bits &&
                bits - codes[first].bits < countOfLength[length])
                return codes[first + bits - codes[first].bits].symbol;
        }
        reader->position = start;
        return {};
    }

  private:
    const std::vector<Code> &codes;
    size_t firstOfLength[33] = {};
    size_t countOfLength[33] = {};
};

// The library looks codes up in tables of 16 entries, one for each prefix of four more bits that
// several codes share. They lie in this order, and an entry's child must lie within 32767 entries.
static bool FitsLookup(const std::vector<Code> &codes, size_t first, size_t end, uint32_t depth,
                       size_t *tables) {
    const size_t own = (*tables)++;
    const auto keyOf = [&](size_t i) {
        return codes[i].bits << (32 - codes[i].length) >> (28 - 4 * depth) & 15;
    };
    while (first < end) {
        const uint32_t key = keyOf(first);
        size_t next = first;
        while (next < end && keyOf(next) == key)
            ++next;
        if (next - first > 1 && ((*tables - own) * 16 - key > 32767 ||
                                 !FitsLookup(codes, first, next, depth + 1, tables)))
            return false;
        first = next;
    }
    return true;
}

// What keeps the codes from being usable, or an empty text.
static std::string CodesFault(const std::vector<Code> &codes) {
    uint64_t next = 0; // code
    uint32_t previous = 1;
    for (size_t i = 0; i < codes.size(); ++i) {
        const uint32_t length = codes[i].length;
        if (length < 1 || length > 32)
            return "entry " + Number(i) + " has a code of " +
                   std::to_string(static_cast<int16_t>(length)) + " bits";
        if (length < previous)
            return "entry " + Number(i) + " has a shorter code than the one before";
        next <<= length - previous;
        if (next >> length)
            return "entry " + Number(i) + " has no code left: the lengths are too short";
        previous = length;
        ++next;
    }
    return {};
}

static const char *const kTableTitles[] = {"background table", "ink table", "delta table"};

static void ReadTable(const Bytes &file, TableName name, uint64_t offset, FontFile *font) {
    Table &table = font->tables[name];
    table.offset = offset;
    const auto complain = [&](const std::string &text) {
        font->complaints.push_back({offset, kTableTitles[name] + (": " + text)});
    };
    if (!Holds(file, offset, 4))
        return complain("lies outside the file");
    const uint64_t count = Word(file, offset);
    if (!Holds(file, offset + 4, 4 * count))
        return complain("its " + Number(count) + " entries reach past the end of the file");
    for (uint64_t i = 0; i < count; ++i)
        table.codes.push_back({Half(file, offset + 4 + 4 * i), Half(file, offset + 6 + 4 * i), 0});
    if (const std::string fault = CodesFault(table.codes); !fault.empty())
        return complain(fault);
    AssignCanonicalCodes(&table.codes);
    size_t tables = 0;
    if (!FitsLookup(table.codes, 0, table.codes.size(), 0, &tables))
        return complain("needs more lookup tables than the library holds");
    table.usable = true;
}

// ---- The index ----

// Reads the sections that end the moment something is wrong with them.
class IndexReader {
  public:
    IndexReader(const Bytes &fileBytes, FontFile *fontFile) : file(fileBytes), font(fontFile) {
    }

    void Read() {
        uint64_t offset = font->indexOffset;
        font->indexEnd = offset;
        if (!Holds(file, offset, 4))
            return Complain(offset, "lies outside the file: the font has no glyphs");
        font->slots = Word(file, offset);
        ReadTable(file, kDelta, offset + 4, font);
        if (!font->tables[kDelta].usable)
            return Complain(offset, "can't be read without its table: the font has no glyphs");
        if (font->slots == 0)
            return Complain(offset, "has no slots: the font has no glyphs");
        offset += 8 + 4 * font->tables[kDelta].codes.size();
        while (ReadRecord(&offset)) {
        }
        font->indexEnd = offset;
        SumDeltas();
    }

  private:
    void Complain(uint64_t offset, const std::string &text) {
        font->complaints.push_back({offset, "index: " + text});
    }

    // False where the section ends.
    bool ReadRecord(uint64_t *offset) {
        const uint64_t start = *offset;
        if (start == file.size())
            return false;
        if (!Holds(file, start, kRecordHeadBytes)) {
            Complain(start, "a record's head is cut short by the end of the file");
            return false;
        }
        const uint32_t slot = Word(file, start);
        const uint32_t length = Word(file, start + 4);
        if (length == 0) {
            *offset += kRecordHeadBytes;
            return false;
        }
        if (!Holds(file, start + kRecordHeadBytes, length)) {
            Complain(start,
                     "a record of " + Number(length) + " bytes reaches past the end of the file");
            return false;
        }
        *offset += kRecordHeadBytes + length;
        if (slot >= font->slots) {
            Complain(start, "a record begins at slot " + Number(slot) + " of " +
                                Number(font->slots) + ", which ends the index");
            return false;
        }
        ++font->indexRecords;
        return ReadDeltas(start, slot, *offset);
    }

    bool ReadDeltas(uint64_t start, uint32_t slot, uint64_t end) {
        const Decoder decoder(font->tables[kDelta]);
        BitReader reader = {file, start + kRecordHeadBytes, end, 0};
        const uint64_t endBit = 8 * (end - reader.first);
        while (slot < font->slots) {
            const std::optional<uint16_t> delta = decoder.Next(&reader);
            if (!delta) {
                Complain(reader.first + reader.position / 8,
                         "no code fits the delta of " + CodePointName(slot));
                return false;
            }
            if (reader.position > endBit) {
                Complain(start, "a record ends at " + CodePointName(slot) + " without an end mark");
                return true;
            }
            if (*delta == kEndMark)
                return true;
            if (*delta)
                deltas[slot] = *delta;
            else
                deltas.erase(slot);
            ++slot;
        }
        return false;
    }

    void SumDeltas() {
        uint32_t sum = 0;
        for (const auto &[codePoint, delta] : deltas)
            font->records[codePoint] = sum +=
                static_cast<uint32_t>(static_cast<int16_t>(delta)); // modulo 2^32
    }

    const Bytes &file;
    FontFile *font;
    std::map<uint32_t, uint16_t> deltas; // by slot
};

// ---- Glyphs ----

// Decodes the runs of one record, and counts its bits.
class RunReader {
  public:
    RunReader(const Bytes &file, const FontFile &fontFile, uint64_t first, uint64_t codedBits,
              StoredGlyph *storedGlyph)
        : reader{file, first, fontFile.dataOffset + fontFile.dataSize, 0}, bitCount(codedBits),
          font(fontFile), stored(storedGlyph) {
    }

    void Read(size_t pixelCount) {
        std::vector<uint8_t> &pixels = stored->glyph.pixels;
        const Decoder decoders[] = {Decoder(font.tables[kBackground]), Decoder(font.tables[kInk])};
        for (size_t colour = 0; pixels.size() < pixelCount; colour = 1 - colour) {
            const size_t left = pixelCount - pixels.size();
            if (reader.position >= bitCount) {
                pixels.resize(pixelCount, colour == 1);
            } else if (const std::optional<uint16_t> run = ReadRun(colour, decoders[colour])) {
                if (*run > left)
                    Complain("a run of " + Number(*run) + " exceeds the " + Number(left) +
                             " pixels that are left");
                pixels.resize(pixels.size() + std::min<size_t>(*run, left), colour == 1);
            } else {
                pixels.resize(pixelCount, 0);
            }
        }
        if (reader.position > bitCount)
            Complain("the last code reaches past the bit count");
    }

  private:
    void Complain(const std::string &text) {
        stored->complaints.push_back({reader.first + reader.position / 8, text});
    }

    std::optional<uint16_t> ReadRun(size_t colour, const Decoder &decoder) {
        ++stored->runs;
        const std::string title = kTableTitles[colour];
        if (!font.tables[colour].usable) {
            Complain("needs the " + title);
            return {};
        }
        const std::optional<uint16_t> run = decoder.Next(&reader);
        if (!run)
            Complain("no code of the " + title + " fits");
        return run;
    }

    BitReader reader;
    const uint64_t bitCount;
    const FontFile &font;
    StoredGlyph *stored;
};

static void ReadHead(const Bytes &file, uint64_t offset, Glyph *glyph) {
    const auto signedByte = [&](uint64_t i) { return static_cast<int8_t>(Byte(file, offset + i)); };
    glyph->width = signedByte(0);
    glyph->height = signedByte(1);
    glyph->bearingX = signedByte(2);
    glyph->bearingY = signedByte(3);
    glyph->advance = static_cast<int16_t>(Half(file, offset + 4));
}

StoredGlyph ReadGlyph(const Bytes &file, const FontFile &font, uint32_t recordOffset) {
    StoredGlyph stored;
    const uint64_t start = font.dataOffset + recordOffset;
    const auto complain = [&](const std::string &text) {
        stored.complaints.push_back({start, text});
    };
    stored.whole = recordOffset + kGlyphHeadBytes <= font.dataSize;
    if (!stored.whole) {
        complain("its record lies outside the glyph data");
        return stored;
    }
    Glyph &glyph = stored.glyph;
    ReadHead(file, start, &glyph);
    const auto bitCount = static_cast<int16_t>(Half(file, start + 6));
    if (bitCount < 0)
        complain("has a bit count of " + std::to_string(bitCount));
    const auto bits = static_cast<size_t>(std::max<int16_t>(bitCount, 0));
    stored.codedBytes = (bits + 7) / 8;
    stored.paddingBits = 8 * stored.codedBytes - bits;
    if (recordOffset + kGlyphHeadBytes + stored.codedBytes > font.dataSize)
        complain("its coded runs reach past the glyph data");
    if (glyph.width > 0 && glyph.height > 0)
        RunReader(file, font, start + kGlyphHeadBytes, bits, &stored)
            .Read(static_cast<size_t>(glyph.width * glyph.height));
    if (const Problem problem = CheckGlyph(glyph); problem != Problem::None)
        complain(problem == Problem::Size ? "has a negative width or height" : Reason(problem));
    return stored;
}

// ---- Whole fonts ----

static void ReadHeader(const Bytes &file, FontFile *font) {
    font->headerWord = Word(file, 0);
    font->lineHeight = static_cast<int32_t>(Word(file, 4));
    font->dataSize = Word(file, 8);
    font->indexOffset = Word(file, 20);
    font->dataOffset = Word(file, 24);
    font->loads = font->dataSize > 0 && Holds(file, font->dataOffset, font->dataSize);
    if (font->dataSize == 0)
        font->complaints.push_back({8, "glyph data: has no bytes: the font does not load"});
    else if (!font->loads)
        font->complaints.push_back({24, "glyph data: its " + Number(font->dataSize) +
                                            " bytes from offset " + Number(font->dataOffset) +
                                            " on reach past the end of the file, " +
                                            Number(file.size()) + ": the font does not load"});
}

// Each record once, in the name of its first character.
static void CheckGlyphs(const Bytes &file, FontFile *font) {
    std::set<uint32_t> seen;
    const auto check = [&](const std::string &name, uint32_t record) {
        if (!seen.insert(record).second)
            return;
        for (const Complaint &complaint : ReadGlyph(file, *font, record).complaints)
            font->complaints.push_back({complaint.offset, name + ": " + complaint.text});
    };
    check("fallback glyph", 0);
    for (const auto &[codePoint, record] : font->records)
        check(CodePointName(codePoint), record);
}

FontFile ReadFont(const Bytes &file) {
    FontFile font;
    if (file.size() < kHeaderBytes) {
        font.complaints.push_back({file.size(), "header: has " + Number(file.size()) +
                                                    " of 28 bytes: the font does not load"});
        return font;
    }
    ReadHeader(file, &font);
    ReadTable(file, kBackground, Word(file, 12), &font);
    ReadTable(file, kInk, Word(file, 16), &font);
    IndexReader(file, &font).Read();
    if (font.loads && font.tables[kDelta].usable && font.slots > 0)
        CheckGlyphs(file, &font);
    return font;
}

} // namespace cbf
