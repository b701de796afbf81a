// SPDX-License-Identifier: MIT
// PBM pictures: what is taken is whole, and comes back the same from its own pixels.
#include "input.h"
#include "overlay/messages.h"
#include "overlay/pbm.h"

#include <cstdlib>
#include <string>

namespace {

std::string Written(const overlay::Bitmap &bitmap) {
    std::string text = "P4 " + std::to_string(bitmap.width) + " " + std::to_string(bitmap.height);
    text += '\n';
    const size_t pitch = bitmap.words.size() / static_cast<size_t>(bitmap.height);
    for (size_t i = 0; i < bitmap.words.size(); ++i)
        for (size_t byte = 0; byte < 4; ++byte)
            if (32 * (i % pitch) + 8 * byte < static_cast<size_t>(bitmap.width))
                text += static_cast<char>(bitmap.words[i] >> (24 - 8 * byte));
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    try {
        const auto bitmap =
            overlay::ParsePbm(std::string_view(reinterpret_cast<const char *>(data), size));
        const bool whole = bitmap.width > 0 && bitmap.height > 0 && bitmap.width < 32768 &&
                           bitmap.height < 32768 &&
                           overlay::ParsePbm(Written(bitmap)).words == bitmap.words;
        if (!whole)
            abort();
    } catch (const overlay::Failure &) {
    }
    return 0;
}
