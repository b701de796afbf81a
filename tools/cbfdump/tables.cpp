// SPDX-License-Identifier: MIT
// Codes are listed by length: within one length they count up, so the symbols alone tell them.
#include "cbfdump/tables.h"

#include "cbf.h"
#include "common/text.h"

namespace cbfdump {

std::string DescribeTable(const cbf::Table &table) {
    if (!table.usable)
        return "unusable";
    if (table.codes.empty())
        return "empty";
    return std::to_string(table.codes.size()) + " codes of " +
           std::to_string(table.codes.front().length) + " to " +
           std::to_string(table.codes.back().length) + " bits";
}

static std::string ListTable(const char *title, const cbf::Table &table, bool isSigned) {
    std::string text =
        tool::Format("%s, offset %llu: %s\n", title, static_cast<unsigned long long>(table.offset),
                     DescribeTable(table).c_str());
    uint32_t length = 0;
    for (const cbf::Code &code : table.codes) {
        if (code.length != length)
            text += tool::Format("%s  %2u bits:", length ? "\n" : "", code.length);
        length = code.length;
        if (isSigned && code.symbol == cbf::kEndMark)
            text += " end";
        else
            text += tool::Format(" %d", isSigned ? static_cast<int16_t>(code.symbol) : code.symbol);
    }
    text += "\n";
    return text;
}

std::string ListTables(const cbf::FontFile &font) {
    return ListTable("background runs", font.runTables[0], false) +
           ListTable("ink runs", font.runTables[1], false) +
           ListTable("deltas", font.index.deltas, true);
}

} // namespace cbfdump
