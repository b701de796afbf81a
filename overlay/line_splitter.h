// SPDX-License-Identifier: MIT
// Lines out of bytes that come in pieces.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace overlay {

class LineSplitter {
  public:
    // Longer lines are not kept.
    explicit LineSplitter(size_t bytesOfLine) : most(bytesOfLine) {
    }

    // Calls take(line, number, isTooLong) for each line that ends in the piece; numbers are from 1.
    template <typename Take> void Feed(std::string_view bytes, Take take) {
        while (!bytes.empty()) {
            const size_t end = bytes.find('\n');
            const std::string_view piece = bytes.substr(0, end);
            tooLong = tooLong || partial.size() + piece.size() > most;
            if (!tooLong)
                partial.append(piece);
            bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
            if (end != std::string_view::npos)
                Pass(take);
        }
    }

    // The same for a last line without an end.
    template <typename Take> void End(Take take) {
        if (!partial.empty() || tooLong)
            Pass(take);
    }

  private:
    template <typename Take> void Pass(Take take) {
        const std::string line = std::exchange(partial, {});
        take(std::string_view(line), ++number, std::exchange(tooLong, false));
    }

    size_t most;
    std::string partial;
    bool tooLong = false;
    size_t number = 0;
};

} // namespace overlay
