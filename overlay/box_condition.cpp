// SPDX-License-Identifier: MIT
// A condition is one word, except that the name of a class may stand in quotes.
#include "box_condition.h"

#include "words.h"

#include <algorithm>
#include <iterator>

namespace overlay {

namespace {

using Value = BoxCondition::Value;
using Relation = BoxCondition::Relation;

struct NamedValue {
    std::string_view name;
    Value value;
};

constexpr NamedValue kValues[] = {
    {"class", Value::Class}, {"conf", Value::Confidence}, {"id", Value::Id}};

struct Sign {
    std::string_view text;
    Relation relation;
};

constexpr Sign kSigns[] = {
    {">=", Relation::AtLeast}, {"<=", Relation::AtMost},
    {"!=", Relation::Unequal}, {"=", Relation::Equal},
    {">", Relation::Above},    {"<", Relation::Below}, // after longer ones
};

// A row of the table whose text the line begins with, which is taken; null if there is none.
template <typename Row, size_t count>
const Row *TakeRow(std::string_view &line, const Row (&rows)[count], std::string_view Row::*text) {
    const auto row = std::find_if(std::begin(rows), std::end(rows), [line, text](const Row &r) {
        return line.substr(0, (r.*text).size()) == r.*text;
    });
    if (row == std::end(rows))
        return nullptr;
    line.remove_prefix(((*row).*text).size());
    return row;
}

std::string TakeName(std::string_view &line) {
    if (line.substr(0, 1) == "\"")
        return TakeQuoted(line);
    const std::string_view name = line.substr(0, line.find_first_of(", \t"));
    if (name.empty())
        throw Failure("expected the name of a class after 'class='");
    line.remove_prefix(name.size());
    return std::string(name);
}

int64_t TakeId(std::string_view &line) {
    const std::string_view id = line.substr(0, line.find_first_of(", \t"));
    line.remove_prefix(id.size());
    return ParseNumber<int64_t>(id, "id");
}

// Names or ids between commas.
void TakeList(std::string_view &line, BoxCondition &condition) {
    for (bool more = true; more;) {
        if (condition.value == Value::Class)
            condition.names.push_back(TakeName(line));
        else
            condition.ids.push_back(TakeId(line));
        more = line.substr(0, 1) == ",";
        line.remove_prefix(more ? 1 : 0);
    }
}

BoxCondition TakeAfterSign(std::string_view &line, Value value, Relation relation) {
    BoxCondition condition;
    condition.value = value;
    condition.relation = relation;
    const bool isList = relation == Relation::Equal || relation == Relation::Unequal;
    if (value != Value::Confidence && !isList)
        throw Failure("a class or an id is equal or not: = or !=");
    if (value != Value::Confidence) {
        TakeList(line, condition);
    } else {
        const std::string_view word = TakeWord(line);
        const std::optional<double> number = RealOf(word);
        if (!number)
            throw Failure("bad confidence " + Quoted(word) + ": expected a number");
        condition.number = *number;
    }
    if (!line.empty() && NextWord(line).data() == line.data())
        throw Failure("expected a blank before " + Quoted(NextWord(line)));
    return condition;
}

bool Holds(Relation relation, double value, double number) {
    switch (relation) {
    case Relation::Equal:
        return value == number;
    case Relation::Unequal:
        return value != number;
    case Relation::AtLeast:
        return value >= number;
    case Relation::AtMost:
        return value <= number;
    case Relation::Above:
        return value > number;
    default:
        return value < number;
    }
}

template <typename Item> bool Contains(const std::vector<Item> &list, const Item &item) {
    return std::find(list.begin(), list.end(), item) != list.end();
}

bool Meets(const BoxCondition &condition, const TrackedBox &box) {
    if (condition.value == Value::Confidence)
        return Holds(condition.relation, box.confidence, condition.number);
    const bool isListed = condition.value == Value::Class ? Contains(condition.names, box.className)
                                                          : Contains(condition.ids, box.id);
    return isListed == (condition.relation == Relation::Equal);
}

} // namespace

std::vector<BoxCondition> TakeConditions(std::string_view &line) {
    std::vector<BoxCondition> conditions;
    for (;;) {
        std::string_view rest = WithoutBlanksBefore(line);
        const NamedValue *const value = TakeRow(rest, kValues, &NamedValue::name);
        const Sign *const sign = value ? TakeRow(rest, kSigns, &Sign::text) : nullptr;
        if (!sign)
            return conditions;
        conditions.push_back(TakeAfterSign(rest, value->value, sign->relation));
        line = rest;
    }
}

bool MeetsAll(const std::vector<BoxCondition> &conditions, const TrackedBox &box) {
    return std::all_of(conditions.begin(), conditions.end(),
                       [&box](const BoxCondition &condition) { return Meets(condition, box); });
}

} // namespace overlay
