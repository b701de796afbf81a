// SPDX-License-Identifier: MIT
// The codes of a font's run lengths, made from its own statistics and as small as they get.
#pragma once

#include "cbf/codes.h"

namespace cbf {

// The codes of both colours, background first. A rare length does without: its run is written as
// two shorter ones with a run of 0 of the other colour between them.
struct RunCoding {
    Counts counts[2];
    std::vector<Code> codes[2];
    std::map<uint16_t, uint16_t> firstParts[2]; // of the lengths without code
};

// For glyphs whose runs these are, as CodedRuns gives them.
RunCoding CodeRuns(const std::vector<std::vector<uint16_t>> &glyphs);

// Writes glyph runs in that coding.
class RunWriter {
  public:
    explicit RunWriter(const RunCoding &runCoding);
    BitWriter Write(const std::vector<uint16_t> &runs) const;

  private:
    void PutRun(BitWriter &writer, size_t colour, uint16_t length) const;

    const RunCoding &coding;
    const CodeBook books[2];
};

} // namespace cbf
