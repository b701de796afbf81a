// SPDX-License-Identifier: MIT
// Each piece is measured once, from where the pen stands, so that the cost grows with the text
// alone.
#include "paragraph.h"

#include "words.h"

#include <algorithm>
#include <utility>

namespace overlay {

namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view TakeFront(std::string_view &text, size_t end) {
    const std::string_view front = text.substr(0, end);
    text.remove_prefix(front.size());
    return front;
}

class LineFitter {
  public:
    explicit LineFitter(const LineShape &ofLines) : shape(ofLines) {
    }

    void AddLine(std::string_view text);

    std::string lines;

  private:
    void Start(std::string_view marker);
    bool Add(std::string_view piece, bool mustFit);
    void AddWord(std::string_view blanks, std::string_view word);
    void AddCut(std::string_view word);

    const LineShape &shape;
    // Of the line so far; its pen started at 0.
    OrnMinRenderPoint pen{0, 0};
    int32_t left = 0;
    int32_t right = 0;
    bool hasText = false; // besides a marker
};

void LineFitter::Start(std::string_view marker) {
    pen = {0, 0};
    left = right = 0;
    Add(marker, false);
    hasText = false;
}

// False, with nothing added, when the piece has to fit and does not.
bool LineFitter::Add(std::string_view piece, bool mustFit) {
    OrnMinRenderPoint end = pen;
    OrnMinRenderRect rect{};
    OrnMinRenderGetTextRect(shape.context, shape.font, std::string(piece).c_str(), &end, 0, &rect);
    const int32_t newLeft = std::min(left, rect.left);
    const int32_t newRight = std::max(right, rect.right);
    if (mustFit && int64_t{newRight} - newLeft > shape.width)
        return false;
    lines += piece;
    pen = end;
    left = newLeft;
    right = newRight;
    hasText = true;
    return true;
}

void LineFitter::AddWord(std::string_view blanks, std::string_view word) {
    if (Add(std::string(blanks).append(word), true))
        return;
    if (hasText) {
        lines += '\n';
        Start(shape.marker);
    }
    if (!Add(word, true))
        AddCut(word);
}

void LineFitter::AddCut(std::string_view word) {
    while (!word.empty()) {
        const std::string_view character = TakeCharacter(word);
        if (Add(character, hasText))
            continue;
        lines += '\n';
        Start(shape.marker);
        Add(character, false);
    }
}

void LineFitter::AddLine(std::string_view text) {
    Start("");
    while (!text.empty()) {
        const std::string_view blanks = TakeFront(text, text.find_first_not_of(kBlanks));
        if (!text.empty())
            AddWord(blanks, TakeFront(text, text.find_first_of(kBlanks)));
    }
}

} // namespace

std::string FitLines(std::string_view text, const LineShape &shape) {
    LineFitter fitter(shape);
    fitter.AddLine(TakeFront(text, text.find('\n')));
    while (!text.empty()) {
        text.remove_prefix(1);
        fitter.lines += '\n';
        fitter.AddLine(TakeFront(text, text.find('\n')));
    }
    return std::move(fitter.lines);
}

} // namespace overlay
