// SPDX-License-Identifier: MIT
// Measured first and then written, so that no length is assumed.
#include "common/text.h"

#include <cstdarg>
#include <cstdio>

namespace tool {

std::string Format(const char *format, ...) {
    std::va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, format, arguments)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    va_end(arguments);
    return text;
}

} // namespace tool
