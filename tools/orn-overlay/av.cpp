// SPDX-License-Identifier: MIT
// The libraries report from any of their threads, so that what they said last is kept under a lock.
#include "av.h"

#include "common/text.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace {

std::mutex messageLock;
std::string lastMessage;

void KeepMessage(void * /*object*/, int level, const char *format, va_list arguments) {
    if (level > AV_LOG_ERROR)
        return;
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    std::string message = text;
    message.erase(message.find_last_not_of(" \r\n.") + 1);
    const std::lock_guard<std::mutex> guard(messageLock);
    lastMessage = std::move(message);
}

} // namespace

void KeepLibraryMessages() {
    av_log_set_callback(KeepMessage);
}

tool::Failure AvFailure(const std::string &subject, int error) {
    char reason[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(error, reason, sizeof reason);
    const std::lock_guard<std::mutex> guard(messageLock);
    std::string said = std::move(lastMessage);
    lastMessage.clear();
    return tool::Failure(tool::kBadData,
                         subject + ": " + reason + (said.empty() ? "" : " (" + said + ")"));
}

int AvChecked(int value, const std::string &subject) {
    if (value == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (value < 0)
        throw AvFailure(subject, value);
    return value;
}

std::string ClockText(double seconds) {
    constexpr double kMost = 1e9; // 31 years; what a damaged clip says may be any number
    const auto tenths = static_cast<long long>(10 * std::max(0.0, std::min(kMost, seconds)));
    return tool::Format("%02lld:%02lld:%02lld.%lld", tenths / 36000, tenths / 600 % 60,
                        tenths / 10 % 60, tenths % 10);
}
