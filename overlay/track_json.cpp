// SPDX-License-Identifier: MIT
// What is not understood in an object is passed over: detectors write more than we draw.
#include "track_json.h"

#include "track_values.h"

#include <nlohmann/json.hpp>

namespace overlay {

namespace {

using Json = nlohmann::json;

constexpr int64_t kNotTracked = -1;
constexpr size_t kMaxErrors = 20;

std::string NotJson(const Json::exception &error) {
    const auto *syntax = dynamic_cast<const Json::parse_error *>(&error);
    return syntax ? "is no JSON from byte " + std::to_string(syntax->byte) + " on"
                  : std::string("holds a number that is too large");
}

// Null when it is not there, or null in the file.
const Json *Find(const Json &object, const char *name) {
    const auto found = object.find(name);
    return found == object.end() || found->is_null() ? nullptr : &*found;
}

double NumberOf(const Json &value, const char *name) {
    if (!value.is_number())
        throw Failure("bad \"" + std::string(name) + "\": expected a number");
    return value.get<double>();
}

double NumberOf(const Json &object, const char *name, double otherwise) {
    const Json *const value = Find(object, name);
    return value ? NumberOf(*value, name) : otherwise;
}

const Json &Required(const Json &object, const char *name) {
    const Json *const value = object.is_object() ? Find(object, name) : nullptr;
    if (!value)
        throw Failure("expected an object with \"" + std::string(name) + "\"");
    return *value;
}

struct Four {
    double values[4];
};

Four FourNumbers(const Json &object, const char *name) {
    const Json &list = Required(object, name);
    if (!list.is_array() || list.size() != 4)
        throw Failure("bad \"" + std::string(name) + "\": expected four numbers");
    Four four{};
    for (size_t i = 0; i < 4; ++i)
        four.values[i] = NumberOf(list[i], name);
    return four;
}

void SetClass(TrackedBox &box, const Json &value, const TrackSettings &settings) {
    if (value.is_string())
        SetClassName(box, value.get_ref<const std::string &>());
    else
        SetClassNumber(box, NumberOf(value, "class"), settings);
}

TrackedBox BoxOfLine(const Json &object, const TrackSettings &settings) {
    TrackedBox box{};
    const auto [left, top, right, bottom] = FourNumbers(object, "box").values;
    SetCorners(box, left, top, right, bottom);
    box.id = CheckedWhole(NumberOf(object, "id", kNotTracked), "id");
    box.confidence = CheckedReal(NumberOf(object, "conf", 1), "conf");
    if (const Json *const name = Find(object, "class"))
        SetClass(box, *name, settings);
    return box;
}

TrackedBox BoxOfCoco(const Json &object, const TrackSettings &settings, const InputNames &names) {
    TrackedBox box{};
    box.frame = CheckedFrame(NumberOf(Required(object, "image_id"), "image_id"), settings, names);
    const auto [left, top, width, height] = FourNumbers(object, "bbox").values;
    SetSides(box, left, top, width, height);
    box.id = CheckedWhole(NumberOf(object, "track_id", kNotTracked), "track_id");
    box.confidence = CheckedReal(NumberOf(object, "score", 1), "score");
    if (const Json *const number = Find(object, "category_id"))
        SetClassNumber(box, NumberOf(*number, "category_id"), settings);
    return box;
}

} // namespace

int64_t ParseJsonLine(std::string_view line, const TrackSettings &settings, const InputNames &names,
                      std::vector<TrackedBox> &boxes) {
    Json object;
    try {
        object = Json::parse(line);
    } catch (const Json::exception &error) {
        throw Failure("the line " + NotJson(error));
    }
    const int64_t frame =
        CheckedFrame(NumberOf(Required(object, "frame"), "frame"), settings, names);
    const Json &list = Required(object, "boxes");
    if (!list.is_array())
        throw Failure("bad \"boxes\": expected an array");
    for (const Json &element : list) {
        boxes.push_back(BoxOfLine(element, settings));
        boxes.back().frame = frame;
    }
    return frame;
}

// Each object of the array is used as soon as it is complete and then forgotten, so that a large
// file is never there as a whole.
std::vector<TrackedBox> ParseCoco(std::string_view content, const std::string &file,
                                  const TrackSettings &settings, const InputNames &names,
                                  Errors &errors) {
    std::vector<TrackedBox> boxes;
    size_t element = 0;
    const auto take = [&](int depth, Json::parse_event_t event, Json &value) {
        if (depth == 0 && event != Json::parse_event_t::array_start &&
            event != Json::parse_event_t::array_end)
            throw Failure("expected an array of results");
        const bool isElement = depth == 1 && (event == Json::parse_event_t::object_end ||
                                              event == Json::parse_event_t::array_end ||
                                              event == Json::parse_event_t::value);
        if (!isElement)
            return true;
        if (errors.size() >= kMaxErrors)
            return false;
        ++element;
        try {
            boxes.push_back(BoxOfCoco(value, settings, names));
        } catch (const Failure &failure) {
            errors.push_back(
                {file, 0, "result " + std::to_string(element) + ": " + failure.what()});
        }
        return false;
    };
    try {
        const Json nothing = Json::parse(content, take); // all of it went to take
        if (errors.size() >= kMaxErrors)
            errors.push_back({file, 0, "too many errors, the rest is not checked"});
    } catch (const Json::exception &error) {
        errors.push_back({file, 0, "the file " + NotJson(error)});
    } catch (const Failure &failure) {
        errors.push_back({file, 0, failure.what()});
    }
    return boxes;
}

} // namespace overlay
