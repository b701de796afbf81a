// SPDX-License-Identifier: MIT
// What a line of tracks asks of boxes: class=person, conf>=0.5.
#pragma once

#include "tracked_box.h"

#include <string_view>
#include <vector>

namespace overlay {

struct BoxCondition {
    enum class Value { Class, Confidence, Id };
    enum class Relation { Equal, Unequal, AtLeast, AtMost, Above, Below };

    Value value = Value::Class;
    Relation relation = Relation::Equal;
    std::vector<std::string> names; // classes, of which one is enough
    std::vector<int64_t> ids;       // likewise
    double number = 0;              // confidence
};

// Takes the conditions that stand at the front of the line. Throws Failure.
std::vector<BoxCondition> TakeConditions(std::string_view &line);

bool MeetsAll(const std::vector<BoxCondition> &conditions, const TrackedBox &box);

} // namespace overlay
