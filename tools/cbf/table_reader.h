// SPDX-License-Identifier: MIT
// The tables of a font file, and decoding with them: independently of the library, and with the
// same result also where no code fits.
#pragma once

#include "cbf/codes.h"
#include "cbf/complaints.h"

namespace cbf {

struct Table {
    uint64_t offset = 0;
    bool usable = false; // as the library sees it; what can't be used has no codes to rely on
    std::vector<Code> codes;
    std::vector<uint32_t> starts; // the codes' bits from bit 31 down, which ascend
};

Table ReadTable(const View &file, uint64_t offset, const std::string &title,
                Complaints &complaints);

// What one step of decoding reads.
struct Walk {
    uint16_t symbol;
    uint32_t bits;
    bool fits; // false: no code fits, and symbol and bits are what the library takes
};

// Takes the next code of a usable table; the reader moves past its bits.
Walk TakeCode(const Table &table, BitReader &reader);

} // namespace cbf
