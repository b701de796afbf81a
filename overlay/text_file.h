// SPDX-License-Identifier: MIT
// A text in a file that another program replaces while frames flow, by writing a new file and
// renaming it.
#pragma once

#include <string>

#include <sys/stat.h>

namespace overlay {

class TextFile {
  public:
    // Reads it for the first time. Throws FileFailure.
    explicit TextFile(std::string path);

    // The text as it is now, without the line feed at its end. What can't be read, or is no text,
    // leaves the one before.
    const std::string &Content();

  private:
    void Read();

    std::string path;
    struct stat seen {};
    std::string content;
};

} // namespace overlay
