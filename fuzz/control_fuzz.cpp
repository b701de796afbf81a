// SPDX-License-Identifier: MIT
// Control lines: what is drawn after all of them is what those that still hold draw by themselves.
#include "input.h"
#include "overlay/engine.h"

#include <algorithm>
#include <cstdlib>

constexpr int32_t kWidth = 40;
constexpr int32_t kHeight = 24;

struct NamedLine {
    std::string name;
    std::string line; // with "set" and the name
};

static overlay::Engine MakeEngine() {
    overlay::Settings settings;
    settings.clock.start = 0; // not the time of day
    overlay::Engine engine(settings);
    if (!engine.SetFont(ORN_FUZZ_FONT).empty() ||
        !engine.SetScript("* text 3 12 white \"A\"", "no folder/script").empty())
        abort();
    engine.SetFrames({kWidth, kHeight, true, {}});
    return engine;
}

static std::vector<uint8_t> Drawn(overlay::Engine &engine) {
    std::vector<uint8_t> bytes(kWidth * kHeight * 3 / 2);
    engine.Draw({0, kWidth, kHeight, kWidth, bytes.data(), 0, bytes.data() + kWidth * kHeight}, 3,
                {3, 25});
    return bytes;
}

static std::string SecondWord(const std::string &line) {
    const size_t first = line.find_first_of(" \t", line.find_first_not_of(" \t"));
    const size_t begin = line.find_first_not_of(" \t", first);
    return line.substr(begin, line.find_first_of(" \t\r", begin) - begin);
}

// What holds after another line that was right.
static void Follow(std::vector<NamedLine> &lines, const std::string &line) {
    const std::string name = SecondWord(line);
    const auto named = std::find_if(lines.begin(), lines.end(),
                                    [&name](const NamedLine &l) { return l.name == name; });
    if (line.compare(line.find_first_not_of(" \t"), 3, "set") != 0)
        lines.erase(named);
    else if (named != lines.end())
        named->line = line;
    else
        lines.push_back({name, line});
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view text(reinterpret_cast<const char *>(data), size);
    overlay::Engine engine = MakeEngine();
    std::vector<NamedLine> holding;
    while (!text.empty()) {
        const std::string line(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const bool isEmpty = line.find_first_not_of(" \t\r#") == line.npos ||
                             line[line.find_first_not_of(" \t")] == '#';
        const bool isPlain =
            line.find_first_of("\r\xEF") == line.npos && line.find("\"/") == line.npos;
        if (!isEmpty && isPlain && engine.Control(line, "control", 1).empty())
            Follow(holding, line);
    }
    overlay::Engine other = MakeEngine();
    for (const NamedLine &named : holding)
        if (!other.Control(named.line, "control", 1).empty())
            abort();
    if (Drawn(engine) != Drawn(other))
        abort();
    return 0;
}
