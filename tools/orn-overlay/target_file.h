// SPDX-License-Identifier: MIT
// A film under its temporary name, and the signals that end the work on it before its end.
#pragma once

#include "common/output_file.h"

#include <memory>
#include <string>

// While it lives, SIGINT, SIGTERM and SIGHUP (unless HandleReloads comes after it) remove the
// temporary file and end the program. Where
// partial films are kept, the first of them asks the program to end the film (StopRequested), and
// only the next one ends the program. There is one such object at a time.
class TargetFile {
  public:
    // An empty path stands for what goes elsewhere than into a file. That and what is no regular
    // file is written to directly, so that there is nothing to remove. Throws tool::Failure.
    TargetFile(const std::string &path, bool keepPartial);
    ~TargetFile();
    TargetFile(const TargetFile &) = delete;
    TargetFile &operator=(const TargetFile &) = delete;

    // The file to write.
    const std::string &Path() const {
        return file ? file->TemporaryPath() : target;
    }
    bool KeepsPartial() const {
        return keeps;
    }
    void Publish(); // under the final name; throws tool::Failure

  private:
    const std::string target;
    std::unique_ptr<tool::OutputFile> file;
    const bool keeps;
};
