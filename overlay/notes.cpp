// SPDX-License-Identifier: MIT
#include "notes.h"

#include <utility>

namespace overlay {

namespace {

constexpr size_t kMaxNotes = 20;

} // namespace

void Notes::Add(const std::string &file, size_t line, const std::string &text) {
    if (count < kMaxNotes)
        waiting.push_back({file, line, text});
    else if (count == kMaxNotes)
        waiting.push_back({file, 0, "there is more to note, which is not told"});
    count += count <= kMaxNotes;
}

Errors Notes::Take() {
    return std::exchange(waiting, {});
}

void Notes::Forget() {
    count = 0;
    waiting.clear();
}

} // namespace overlay
