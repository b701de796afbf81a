// SPDX-License-Identifier: MIT
// Fonts of any format from bytes to a CBF file, as cbfconv makes it: what gets through is drawn by
// the library as it was read, and the checker finds nothing. The first two bytes are the options.
#include "cbf/check.h"
#include "cbfconv/merge.h"
#include "cbfconv/verify.h"
#include "common/failure.h"
#include "fence.h"
#include "font_files.h"
#include "input.h"

constexpr uint32_t kEnd = 0x250; // code points: a font has the others in the same way

static cbfconv::Options ReadOptions(Input *input, const std::string &path) {
    const int32_t size = input->Byte(), flags = input->Byte();
    cbfconv::Options options;
    cbfconv::Input font;
    font.path = path;
    font.choice.pixelSize = size < 200 ? size : (size - 190) * 15;
    font.choice.face = flags & 1 ? "1" : "";
    font.choice.instance = flags & 2 ? "wght=300" : "";
    if (flags & 4)
        font.wanted.Change("all", true);
    font.wanted.Set(0, kEnd - 1, true);
    font.wanted.Set(kEnd, tool::kMaxCodePoint, false);
    font.wanted.Set(0, '\n', false); // never drawn, these two
    options.inputs = {font};
    options.strict = flags & 8;
    options.letterSpacing = flags >> 4;
    return options;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input = {data, data + size};
    const cbf::Bytes head(data, data + (size < 2 ? size : 2));
    const TempFile source(cbf::Bytes(data + head.size(), data + size));
    const cbfconv::Options options = ReadOptions(&input, source.path);
    try {
        tool::Progress progress("convert_fuzz");
        cbfconv::MergedFont merged = cbfconv::ReadFonts(options, progress);
        const cbf::File file = cbfconv::MakeFile(options, merged);
        if (merged.font.glyphs.empty())
            return 0;
        const TempFile made(file.bytes);
        const std::string wrong = cbfconv::FirstDifference(made.path, merged.font, progress);
        Require(wrong.empty(), wrong.c_str());
        Require(cbf::CheckFont(file.bytes, cbf::ReadFont(file.bytes)).Empty(), "a sound file");
    } catch (const tool::Failure &) {
    }
    return 0;
}
