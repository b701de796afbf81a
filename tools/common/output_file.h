// SPDX-License-Identifier: MIT
// Files that appear whole or not at all: written under a temporary name beside their own, and
// renamed at the end. What is no regular file, such as a pipe, can't be replaced: there the
// finished bytes are written to it.
#pragma once

#include <csignal>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tool {

// Throws Failure where nothing can be written: the path is empty or a directory, or leads to one of
// the files that are read.
void CheckTarget(const std::string &path, const std::vector<std::string> &inputs);

// Holds back the signals that would end the program and leave the temporary file, while it lives.
// All calls throw Failure.
class OutputFile {
  public:
    // Links are followed, so that what they lead to is replaced and not they.
    explicit OutputFile(const std::string &path);
    ~OutputFile();
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    // The file to be, for those who write or read it by themselves.
    int FileDescriptor() const {
        return descriptor;
    }
    const std::string &TemporaryPath() const {
        return temporary;
    }

    void Write(const void *bytes, size_t size);

    // A new file has the usual mode, one that replaces another has the mode of that one. It is on
    // the disk before the old one goes.
    void Publish();

  private:
    void KeepOwnerAndMode() const;
    void ReplaceTarget();
    void CopyToTarget();
    void Remove();

    const std::string name; // as the user gave it, for messages
    std::string target;     // what is replaced; empty: written to directly
    std::string temporary;
    int descriptor = -1;
    sigset_t signalsBefore;
};

} // namespace tool
