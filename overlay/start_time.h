// SPDX-License-Identifier: MIT
// The time at which a recording began, as users write it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace overlay {

// Nanoseconds since 1970 (UTC) of a text such as "2026-11-23 14:05:09.5", "2026-11-23T14:05Z",
// "2026-11-23 14:05:09+01:00" or "@1795442709.5". Without a zone, the time is that of the machine,
// or UTC. Only seconds have a fraction. Nothing for what is no time, or lies before 1970 or after
// 2223.
std::optional<int64_t> ParseStartTime(const std::string &text, bool utc);

} // namespace overlay
