// SPDX-License-Identifier: MIT
// What lists of faults leave out is told by kind.
#include "cbf/complaints.h"

#include <algorithm>

namespace cbf {

// By flaw, as in "and 5 more ...".
static const char *const kNames[] = {"sections with a fault",
                                     "deltas that no code fits",
                                     "index records without an end mark",
                                     "glyph records outside the glyph data",
                                     "glyphs with a negative bit count",
                                     "glyphs whose coded runs reach past the glyph data",
                                     "runs that exceed their glyph",
                                     "glyphs that need a table which can't be used",
                                     "runs that no code fits",
                                     "glyphs whose last code reaches past the bit count",
                                     "glyphs with a bad box",
                                     "glyphs whose outline is drawn elsewhere",
                                     "characters that are never drawn"};
static_assert(sizeof kNames / sizeof *kNames == static_cast<size_t>(Flaw::Count));

std::vector<std::string> Complaints::Lines() const {
    std::vector<std::string> lines;
    for (const Complaint &complaint : list)
        lines.push_back("offset " + std::to_string(complaint.offset) + ": " + complaint.text);
    for (size_t flaw = 0; flaw < static_cast<size_t>(Flaw::Count); ++flaw)
        if (counts[flaw] > kListed)
            lines.push_back("and " + std::to_string(counts[flaw] - kListed) + " more " +
                            kNames[flaw]);
    return lines;
}

void Complaints::AddUnlisted(const Complaints &others) {
    for (size_t flaw = 0; flaw < static_cast<size_t>(Flaw::Count); ++flaw)
        counts[flaw] += others.counts[flaw] - std::min(others.counts[flaw], kListed);
}

} // namespace cbf
