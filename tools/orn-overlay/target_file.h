// SPDX-License-Identifier: MIT
// A film under its temporary name, and the signals that end the work on it before its end.
#pragma once

#include <string>

// While it lives, SIGINT, SIGTERM and SIGHUP remove the temporary file and end the program. Where
// partial films are kept, the first of them asks the program to end the film (StopRequested), and
// only the next one ends the program. There is one such object at a time.
class TargetFile {
  public:
    // An empty path: what goes elsewhere than into a file, so that there is nothing to remove.
    // Throws tool::Failure where the path is something else than a file.
    TargetFile(std::string path, bool keepPartial);
    ~TargetFile();
    TargetFile(const TargetFile &) = delete;
    TargetFile &operator=(const TargetFile &) = delete;

    const std::string &TemporaryPath() const {
        return temporary;
    }
    bool KeepsPartial() const {
        return keeps;
    }
    void Publish(); // under the final name; throws tool::Failure

  private:
    const std::string target;
    const std::string temporary;
    const bool keeps;
};

bool StopRequested();
