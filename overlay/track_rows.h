// SPDX-License-Identifier: MIT
// Tracked boxes as tables, a box a row.
#pragma once

#include "track_settings.h"
#include "tracked_box.h"

#include <array>

namespace overlay {

// The fields of a row, at most that many; more are not looked at.
struct Fields {
    static constexpr size_t kMost = 64;
    std::array<std::string, kMost> values;
    size_t count = 0;
};

// Between commas. Blanks around a field don't count; in double quotes a field may hold commas, and
// two quotes for one. Throws Failure.
Fields FieldsBetweenCommas(std::string_view row);
Fields FieldsBetweenBlanks(std::string_view row);

// Where each value stands in the rows of a file that names its columns.
class Columns {
  public:
    // Of a first row. Throws Failure unless AreNamed.
    explicit Columns(const Fields &header);

    // Whether all that a box needs is there.
    static bool AreNamed(const Fields &header);

    TrackedBox BoxOf(const Fields &row, const TrackSettings &settings,
                     const InputNames &names) const;

  private:
    enum Column { Frame, Id, Left, Top, Right, Bottom, Width, Height, Confidence, Class, ClassId };
    static constexpr size_t kColumns = ClassId + 1;

    struct Names;
    static const Names kNames[];

    static std::array<size_t, kColumns> PlacesIn(const Fields &header);

    // The value of a row; nothing where it is empty or the file has no such column.
    std::string_view ValueOf(const Fields &row, Column column) const;
    double NumberOf(const Fields &row, Column column) const;

    std::array<size_t, kColumns> places;
};

TrackedBox BoxOfMot(const Fields &row, const TrackSettings &settings, const InputNames &names);

// Edges in shares of the frame. Without a frame in the row, box.frame is 0.
TrackedBox BoxOfYolo(const Fields &row, bool hasFrame, const TrackSettings &settings,
                     const InputNames &names);

} // namespace overlay
