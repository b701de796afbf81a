// Characters by number: their names, sets of them as command lines write them, and UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

constexpr uint32_t kMaxCodePoint = 0x10FFFF;

// "U+0041"
std::string CodePointName(uint32_t codePoint);

// "0x41", "U+41" or "65".
std::optional<uint32_t> ParseCodePoint(const std::string &text);

// The same, or a single character.
std::optional<uint32_t> ParseCharacter(const std::string &text);

// For code points up to kMaxCodePoint.
std::string Utf8(uint32_t codePoint);

// The character that begins at *position, which moves past it; none, without moving, where the
// bytes are no UTF-8 (RFC 3629).
std::optional<uint32_t> NextCharacter(const std::string &text, size_t *position);

// A set of code points up to kMaxCodePoint.
class CodePointSet {
  public:
    bool Has(uint32_t codePoint) const {
        return members[codePoint];
    }
    void Set(uint32_t first, uint32_t last, bool member);

    // "0x20-0x7E,U+0400-U+04FF,176", or "all": adds or removes these. Throws std::invalid_argument,
    // whose text says what is wrong with which part.
    void Change(const std::string &list, bool member);

    // Whether "all" was added, which asks for whatever a font has.
    bool HoldsAll() const {
        return all;
    }

  private:
    std::vector<bool> members = std::vector<bool>(kMaxCodePoint + 1);
    bool all = false;
};
