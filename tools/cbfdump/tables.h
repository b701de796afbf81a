// SPDX-License-Identifier: MIT
// The Huffman tables of a font, in words and in full.
#pragma once

#include "cbf/reader.h"

namespace cbfdump {

// "5 codes of 1 to 4 bits"
std::string DescribeTable(const cbf::Table &table);

// The codes of all three tables, by length.
std::string ListTables(const cbf::FontFile &font);

} // namespace cbfdump
