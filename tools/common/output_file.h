// SPDX-License-Identifier: MIT
// Files that appear whole or not at all: written under a temporary name beside their own, and
// renamed at the end.
#pragma once

#include <csignal>
#include <string>

namespace tool {

// Throws Failure where renaming would replace something that is no regular file, such as /dev/null.
void CheckTarget(const std::string &path);

// Holds back the signals that would end the program and leave the temporary file, while it lives.
class OutputFile {
  public:
    explicit OutputFile(std::string targetPath);
    ~OutputFile();
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    const std::string &TemporaryPath() const {
        return temporary;
    }
    void Write(const void *bytes, size_t size); // all of the file; throws Failure
    void Publish();                             // throws Failure

  private:
    const std::string target;
    const std::string temporary;
    sigset_t signalsBefore;
};

} // namespace tool
