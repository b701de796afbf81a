// SPDX-License-Identifier: MIT
// Text put together as printf does.
#pragma once

#include <string>

namespace tool {

[[gnu::format(printf, 1, 2)]] std::string Format(const char *format, ...);

} // namespace tool
