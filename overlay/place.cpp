// SPDX-License-Identifier: MIT
// A place is read once, as an edge and what is added to it, and resolved in every frame.
#include "place.h"

#include "words.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace overlay {

namespace {

constexpr double kMaxPercent = 1e6;

struct NamedEdge {
    std::string_view name;
    Axis axis;
    Edge edge;
};

constexpr NamedEdge kEdges[] = {
    {"left", Axis::X, Edge::Start},    {"center", Axis::X, Edge::Middle},
    {"centre", Axis::X, Edge::Middle}, {"right", Axis::X, Edge::End},
    {"top", Axis::Y, Edge::Start},     {"center", Axis::Y, Edge::Middle},
    {"centre", Axis::Y, Edge::Middle}, {"bottom", Axis::Y, Edge::End},
};

[[noreturn]] void Refuse(std::string_view word, Axis axis) {
    const std::string edges = axis == Axis::X ? "left, center, right" : "top, center, bottom";
    throw Failure("bad " + std::string(axis == Axis::X ? "x" : "y") + " coordinate " +
                  Quoted(word) + ": expected a number, N%, +N, or " + edges +
                  ", each with +N or -N after it if need be");
}

bool TakePrefix(std::string_view &text, std::string_view prefix) {
    const bool found = text.substr(0, prefix.size()) == prefix;
    if (found)
        text.remove_prefix(prefix.size());
    return found;
}

// The edge that a coordinate begins with, if it begins with a letter.
bool TakeEdge(std::string_view &rest, Place &place) {
    if (TakePrefix(rest, "text."))
        place.source = Source::Text;
    else if (TakePrefix(rest, "box."))
        place.source = Source::Box;
    const std::string_view name = rest.substr(0, rest.find_first_of("+-"));
    for (const NamedEdge &named : kEdges) {
        if (named.axis == place.axis && named.name == name) {
            place.edge = named.edge;
            rest.remove_prefix(name.size());
            return true;
        }
    }
    return false;
}

double ParsePercent(std::string_view number, std::string_view word) {
    const std::optional<double> percent = RealOf(number);
    if (!percent || *percent > kMaxPercent)
        throw Failure("bad percentage in " + Quoted(word));
    return *percent;
}

bool BeginsNumber(std::string_view text) {
    return !text.empty() && (IsDigit(text[0]) || text[0] == '-');
}

// One N or N%, with the sign that stood before it.
void TakeTerm(std::string_view &rest, bool negative, std::string_view word, Place &place) {
    const std::string_view term = rest.substr(0, rest.find_first_of("+-"));
    rest.remove_prefix(term.size());
    if (term.empty() || !IsDigit(term[0]))
        throw Failure("bad number in " + Quoted(word));
    if (term.back() == '%') {
        const double share = ParsePercent(term.substr(0, term.size() - 1), word) / 100;
        place.share += negative ? -share : share;
        return;
    }
    // A minus is the number's own, so that the lowest int32 can be written.
    const std::string number = (negative ? "-" : "") + std::string(term);
    place.offset += ParseNumber<int32_t>(number, "int32");
}

void TakeTerms(std::string_view rest, std::string_view word, Place &place) {
    while (!rest.empty()) {
        const bool negative = rest[0] == '-';
        if (rest[0] == '+' || negative)
            rest.remove_prefix(1);
        TakeTerm(rest, negative, word, place);
    }
}

int64_t EdgeOf(int32_t start, int32_t end, Edge edge) {
    if (edge == Edge::Middle)
        return (int64_t{start} + end) / 2;
    return edge == Edge::End ? end : start;
}

} // namespace

Place ParsePlace(std::string_view word, Axis axis) {
    Place place;
    place.axis = axis;
    std::string_view rest = word;
    if (TakePrefix(rest, "+"))
        place.source = Source::Before;
    const bool hasEdge = place.source == Source::Frame && TakeEdge(rest, place);
    const bool needsEdge = place.source == Source::Text || place.source == Source::Box;
    if (!hasEdge && (needsEdge || !BeginsNumber(rest)))
        Refuse(word, axis);
    TakeTerms(rest, word, place);
    return place;
}

Place ParseLength(std::string_view word, Axis axis) {
    if (!BeginsNumber(word))
        throw Failure("bad length " + Quoted(word) + ": expected a number or N%");
    return ParsePlace(word, axis);
}

Place ParseSize(std::string_view word) {
    if (word.empty())
        throw Failure("expected a size, found the end of the line");
    if (!IsDigit(word[0]))
        throw Failure("bad size " + Quoted(word) + ": expected a number, or N% of the height");
    const Place size = ParseLength(word, Axis::Y);
    if (size.offset < 0 || size.share < 0 || (size.offset == 0 && size.share == 0))
        throw Failure("bad size " + Quoted(word) + ": expected more than 0");
    return size;
}

int32_t PixelsOf(const Place &size, int32_t frameHeight) {
    const auto share = static_cast<int64_t>(std::floor(size.share * frameHeight + 0.5));
    return std::max(1, Saturated(share + size.offset));
}

int32_t Saturated(int64_t value) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(value, Limits::min(), Limits::max()));
}

std::optional<OrnMinRenderRect> PlaceResolver::Reference(const Place &place) const {
    switch (place.source) {
    case Source::Before:
        return OrnMinRenderRect{before.x, before.y, before.x, before.y};
    case Source::Text:
        return surroundings.text;
    case Source::Box:
        return surroundings.box;
    default:
        return surroundings.frame;
    }
}

std::optional<int32_t> PlaceResolver::Resolve(const Place &place) {
    const std::optional<OrnMinRenderRect> reference = Reference(place);
    if (!reference)
        return std::nullopt;
    const bool horizontal = place.axis == Axis::X;
    const int32_t size = horizontal ? surroundings.frame.right : surroundings.frame.bottom;
    const int64_t base = horizontal ? EdgeOf(reference->left, reference->right, place.edge)
                                    : EdgeOf(reference->top, reference->bottom, place.edge);
    const auto share = static_cast<int64_t>(std::floor(place.share * size + 0.5));
    const int32_t value = Saturated(base + share + place.offset);
    (horizontal ? before.x : before.y) = value;
    return value;
}

} // namespace overlay
