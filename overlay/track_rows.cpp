// SPDX-License-Identifier: MIT
// Three kinds of tables: with columns that MOTChallenge has fixed, with columns that the first row
// names, and with those of YOLO.
#include "track_rows.h"

#include "track_values.h"
#include "words.h"

#include <algorithm>

namespace overlay {

namespace {

constexpr int64_t kNotTracked = -1;

double Number(std::string_view field, const char *name) {
    const std::optional<double> value = RealOf(field);
    if (!value)
        throw Failure("bad " + std::string(name) + " " + Quoted(field) + ": expected a number");
    return *value;
}

void Add(Fields &fields, std::string value) {
    if (fields.count < Fields::kMost)
        fields.values[fields.count++] = std::move(value);
}

std::string TakeQuotedField(std::string_view &row) {
    std::string value;
    for (size_t i = 1; i < row.size(); ++i) {
        const bool quote = row[i] == '"';
        if (quote && row.substr(i + 1, 1) != "\"") {
            row.remove_prefix(i + 1);
            return value;
        }
        i += quote;
        value += row[i];
    }
    throw Failure("a quote without the one that ends it");
}

std::string TakeField(std::string_view &row) {
    row = WithoutBlanksBefore(row);
    std::string value;
    if (row.substr(0, 1) == "\"")
        value = TakeQuotedField(row);
    const std::string_view rest = row.substr(0, row.find(','));
    value += Trimmed(rest);
    row.remove_prefix(rest.size());
    return value;
}

[[noreturn]] void RefuseCount(const char *expected, size_t count) {
    throw Failure(std::string("expected ") + expected + ", found " + std::to_string(count) +
                  (count == 1 ? " value" : " values"));
}

std::string Lower(std::string_view word) {
    std::string lower(word);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

} // namespace

Fields FieldsBetweenCommas(std::string_view row) {
    Fields fields;
    for (bool more = true; more;) {
        Add(fields, TakeField(row));
        more = !row.empty();
        row.remove_prefix(more ? 1 : 0);
    }
    return fields;
}

Fields FieldsBetweenBlanks(std::string_view row) {
    Fields fields;
    while (!NextWord(row).empty())
        Add(fields, std::string(TakeWord(row)));
    return fields;
}

// The names that detectors, trackers and their sinks write, the first one being ours.
struct Columns::Names {
    Column column;
    std::array<std::string_view, 6> names;
};

const Columns::Names Columns::kNames[] = {
    {Frame, {"frame", "frame_number", "frame_index", "frame_id", "frame_idx", "frame_no"}},
    {Id, {"id", "tracker_id", "track_id", "object_id"}},
    {Left, {"left", "x_min", "xmin", "x1", "bb_left", "bbox_left"}},
    {Top, {"top", "y_min", "ymin", "y1", "bb_top", "bbox_top"}},
    {Right, {"right", "x_max", "xmax", "x2", "bb_right", "bbox_right"}},
    {Bottom, {"bottom", "y_max", "ymax", "y2", "bb_bottom", "bbox_bottom"}},
    {Width, {"width", "w", "bb_width", "bbox_width"}},
    {Height, {"height", "h", "bb_height", "bbox_height"}},
    {Confidence, {"confidence", "conf", "score"}},
    {Class, {"class", "class_name", "label", "category", "name"}},
    {ClassId, {"class_id", "category_id", "cls"}},
};

// Outside of every row for what is not there: rows may be longer than the header.
std::array<size_t, Columns::kColumns> Columns::PlacesIn(const Fields &header) {
    std::array<size_t, kColumns> places;
    places.fill(Fields::kMost);
    const auto end = header.values.begin() + static_cast<ptrdiff_t>(header.count);
    for (const Names &wanted : kNames)
        for (const std::string_view name : wanted.names) {
            const auto isNamed = [name](const std::string &field) { return Lower(field) == name; };
            const auto found = std::find_if(header.values.begin(), end, isNamed);
            if (places[wanted.column] == Fields::kMost && found != end && !name.empty())
                places[wanted.column] = static_cast<size_t>(found - header.values.begin());
        }
    return places;
}

bool Columns::AreNamed(const Fields &header) {
    const std::array<size_t, kColumns> found = PlacesIn(header);
    const auto has = [&](Column column) { return found[column] < Fields::kMost; };
    return has(Frame) && has(Left) && has(Top) && (has(Right) || has(Width)) &&
           (has(Bottom) || has(Height));
}

Columns::Columns(const Fields &header) : places(PlacesIn(header)) {
    if (!AreNamed(header))
        throw Failure("the first row has to name the columns frame, left, top, right or width, and "
                      "bottom or height");
}

std::string_view Columns::ValueOf(const Fields &row, Column column) const {
    return places[column] < row.count ? row.values[places[column]] : std::string_view();
}

double Columns::NumberOf(const Fields &row, Column column) const {
    return Number(ValueOf(row, column), kNames[column].names[0].data());
}

TrackedBox Columns::BoxOf(const Fields &row, const TrackSettings &settings,
                          const InputNames &names) const {
    const auto has = [this, &row](Column column) { return !ValueOf(row, column).empty(); };
    TrackedBox box{};
    box.frame = CheckedFrame(NumberOf(row, Frame), settings, names);
    box.id = has(Id) ? CheckedWhole(NumberOf(row, Id), "id") : kNotTracked;
    const double left = NumberOf(row, Left);
    const double top = NumberOf(row, Top);
    SetCorners(box, left, top, has(Right) ? NumberOf(row, Right) : left + NumberOf(row, Width),
               has(Bottom) ? NumberOf(row, Bottom) : top + NumberOf(row, Height));
    box.confidence = has(Confidence) ? CheckedReal(NumberOf(row, Confidence), "confidence") : 1;
    const std::optional<double> classNumber = RealOf(ValueOf(row, Class));
    if (has(Class) && !classNumber)
        SetClassName(box, ValueOf(row, Class));
    else if (classNumber || has(ClassId))
        SetClassNumber(box, classNumber ? *classNumber : NumberOf(row, ClassId), settings);
    return box;
}

// Ground truth has nine columns, the eighth being the class; results have ten, the last three being
// a place in the world.
TrackedBox BoxOfMot(const Fields &row, const TrackSettings &settings, const InputNames &names) {
    if (row.count < 6)
        RefuseCount("frame,id,left,top,width,height and perhaps confidence", row.count);
    const auto number = [&row](size_t i, const char *name) { return Number(row.values[i], name); };
    TrackedBox box{};
    box.frame = CheckedFrame(number(0, "frame"), settings, names);
    box.id = CheckedWhole(number(1, "id"), "id");
    SetSides(box, number(2, "left"), number(3, "top"), number(4, "width"), number(5, "height"));
    box.confidence = row.count > 6 ? CheckedReal(number(6, "confidence"), "confidence") : 1;
    if (row.count == 8 || row.count == 9)
        SetClassNumber(box, number(7, "class"), settings);
    return box;
}

TrackedBox BoxOfYolo(const Fields &row, bool hasFrame, const TrackSettings &settings,
                     const InputNames &names) {
    const size_t first = hasFrame ? 1 : 0;
    if (row.count < first + 5 || row.count > first + 7)
        RefuseCount(hasFrame ? "frame class x y width height and perhaps confidence and id"
                             : "class x y width height and perhaps confidence and id",
                    row.count);
    const auto number = [&row, first](size_t i, const char *name) {
        return CheckedReal(Number(row.values[first + i], name), name);
    };
    TrackedBox box{};
    if (hasFrame)
        box.frame = CheckedFrame(Number(row.values[0], "frame"), settings, names);
    SetClassNumber(box, number(0, "class"), settings);
    const double x = CheckedShare(number(1, "x"), "x");
    const double y = CheckedShare(number(2, "y"), "y");
    const double width = CheckedShare(number(3, "width"), "width");
    const double height = CheckedShare(number(4, "height"), "height");
    SetSides(box, x - width / 2, y - height / 2, width, height);
    box.confidence = row.count > first + 5 ? number(5, "confidence") : 1;
    box.id = row.count > first + 6 ? CheckedWhole(number(6, "id"), "id") : kNotTracked;
    return box;
}

} // namespace overlay
