// SPDX-License-Identifier: MIT
// Lines from another program that change overlays between two frames.
#pragma once

#include "overlay/engine.h"
#include "overlay/line_splitter.h"

#include "common/descriptor.h"

#include <string>

class ControlPipe {
  public:
    // A pipe (FIFO), a file, or - for standard input. Doesn't wait for who writes. Throws
    // tool::Failure.
    explicit ControlPipe(const std::string &path);

    // Gives the engine the lines that have come, whole ones only, and tells what is wrong with
    // them. Never waits; of a flood, it takes a part.
    void Apply(overlay::Engine &engine);

  private:
    void Tell(const overlay::Errors &errors);

    std::string name;
    tool::Descriptor file;
    overlay::LineSplitter splitter;
    size_t told = 0; // wrong lines
};
