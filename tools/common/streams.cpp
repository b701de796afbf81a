// SPDX-License-Identifier: MIT
// Every call of read and write of the programs stands here, with what is to be done where it comes
// back early.
#include "common/streams.h"

#include "common/failure.h"
#include "common/shown.h"

#include <cerrno>
#include <cstdint>
#include <cstring>

#include <poll.h>
#include <unistd.h>

namespace tool {

// Whether a call that failed is worth another try.
static bool MayGoOn(int descriptor, short event) {
    if (errno == EINTR)
        return true;
    if (errno != EAGAIN && errno != EWOULDBLOCK)
        return false;
    pollfd waiting = {descriptor, event, 0};
    return poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

size_t ReadFully(int descriptor, void *bytes, size_t size) {
    auto *next = static_cast<uint8_t *>(bytes);
    size_t done = 0;
    while (done < size) {
        const ssize_t count = read(descriptor, next + done, size - done);
        if (count == 0)
            errno = 0;
        if (count == 0 || (count < 0 && !MayGoOn(descriptor, POLLIN)))
            return done;
        done += count > 0 ? static_cast<size_t>(count) : 0;
    }
    errno = 0;
    return done;
}

bool WriteFully(int descriptor, const void *bytes, size_t size) {
    const auto *next = static_cast<const uint8_t *>(bytes);
    for (size_t done = 0; done < size;) {
        const ssize_t count = write(descriptor, next + done, size - done);
        if (count < 0 && !MayGoOn(descriptor, POLLOUT))
            return false;
        done += count > 0 ? static_cast<size_t>(count) : 0;
    }
    return true;
}

void WriteOutput(std::string_view text) {
    if (!WriteFully(STDOUT_FILENO, text.data(), text.size()))
        throw SystemFailure("standard output");
}

namespace {

// What doesn't fit at once goes out in parts.
class MessageBuffer {
  public:
    void Add(std::string_view piece) {
        if (used + piece.size() > sizeof bytes)
            Flush();
        std::memcpy(bytes + used, piece.data(), piece.size());
        used += piece.size();
    }
    // Nobody could be told of a failure here.
    void Flush() {
        static_cast<void>(WriteFully(STDERR_FILENO, bytes, used));
        used = 0;
    }

  private:
    char bytes[1024]; // more than any piece has
    size_t used = 0;
};

} // namespace

void Say(const char *program, std::string_view text) {
    MessageBuffer buffer;
    buffer.Add(program);
    buffer.Add(": ");
    for (size_t position = 0; position < text.size();) {
        const ShownPiece piece = ShownPieceAt(text, position);
        buffer.Add(piece.text);
        position += piece.taken;
    }
    buffer.Add("\n");
    buffer.Flush();
}

} // namespace tool
