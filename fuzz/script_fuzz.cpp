// SPDX-License-Identifier: MIT
// Scripts, drawn into frames of both layouts: what is taken is drawn inside of them, and with the
// same luma.
#include "input.h"
#include "overlay/engine.h"

#include <cstdlib>

constexpr int32_t kWidth = 40;
constexpr int32_t kHeight = 24;
constexpr char kTracks[] = "1,1,2,3,10,9\n3,1,9,1,10,9\n2,-1,1e9,-1e9,1e12,0\n1,2,30,9,40,4,0.5\n";

// The luma of some frames; nothing if the script is refused.
static std::vector<uint8_t> LumaOf(std::string_view script, bool hasChroma) {
    overlay::Settings settings{{}, true, hasChroma};
    settings.clock.start = 0; // not the time of day, which may change between two frames
    overlay::Engine engine(settings);
    if (!engine.SetFont(ORN_FUZZ_FONT).empty() ||
        !engine.SetTracks({{kTracks, ""}}, {1, 9}).empty())
        abort();
    std::vector<uint8_t> all;
    if (!engine.SetScript(script, "no folder/script").empty())
        return all;
    engine.SetFrames({kWidth, kHeight, hasChroma, {}});
    for (const int64_t number : {0, 2, 1}) {
        std::vector<uint8_t> bytes(kWidth * kHeight * (hasChroma ? 3 : 2) / 2);
        uint8_t *const chroma = hasChroma ? bytes.data() + kWidth * kHeight : nullptr;
        engine.Draw({0, kWidth, kHeight, kWidth, bytes.data(), 0, chroma}, number, {number, 25});
        all.insert(all.end(), bytes.begin(), bytes.begin() + kWidth * kHeight);
    }
    return all;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    // A line of tracks at its end, since none would add a label.
    const std::string script = std::string(data, data + size) + "\ntracks measure 0 0 \"\"";
    const auto has = [&script](const char *word) { return script.find(word) != script.npos; };
    const bool inFolder = !has("\"/"); // no other names lead out of one that isn't there
    if (inFolder && LumaOf(script, false) != LumaOf(script, true) && !has("label") &&
        !has("paragraph"))
        abort();
    return 0;
}
