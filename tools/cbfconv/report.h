// SPDX-License-Identifier: MIT
// What cbfconv tells of its work: what was left out, what was written, which glyph is to blame.
#pragma once

#include "cbf/writer.h"
#include "cbfconv/merge.h"

namespace cbfconv {

// "a.ttf, b.bdf"
std::string ListPaths(const std::vector<Input> &inputs);

// What the fonts have and a CBF font can't, on standard error.
void TellLeftOut(const std::vector<Input> &inputs, const MergedFont &merged);

// What was asked for and isn't there, or only in part, on standard error.
void TellOmissions(const std::vector<Input> &inputs, const MergedFont &merged);

// Counts and sizes of what was written.
std::string DescribeResult(const std::string &output, const cbf::File &file, const cbf::Font &font);

} // namespace cbfconv
