// SPDX-License-Identifier: MIT
// A font file as memory, of which only what is read takes room: a small font may have 4 GiB of
// nothing between its sections.
#pragma once

#include "cbf/bytes.h"

#include <string>

namespace cbfdump {

class MappedFile {
  public:
    // Throws tool::Failure, also for what is no regular file: the library loads no pipe either. The
    // program ends with a message if the file is cut short while it is mapped.
    explicit MappedFile(const std::string &path);
    ~MappedFile();
    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;

    cbf::View Bytes() const {
        return {first, size};
    }

  private:
    const uint8_t *first = nullptr;
    size_t size = 0;
};

} // namespace cbfdump
