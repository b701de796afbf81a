// SPDX-License-Identifier: MIT
// Tells when files have been replaced or written.
#pragma once

#include <string>
#include <vector>

#include <sys/stat.h>

class WatchedFiles {
  public:
    // As they are now.
    void Set(std::vector<std::string> paths);

    // Whether one of them is another than when this was asked, or Set, last.
    bool HaveChanged();

  private:
    struct File {
        std::string path;
        struct stat seen;
    };
    std::vector<File> files;
};
