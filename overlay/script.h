// SPDX-License-Identifier: MIT
// Scripts: text to overlays, one a line.
#pragma once

#include "messages.h"
#include "overlay.h"
#include "resources.h"

namespace overlay {

// What a script needs to know of the world around it.
struct ScriptInputs {
    InputNames names;
    FontChoice font; // until the script names another
    FontStore fonts; // that are loaded already
    bool hasTracks = false;
    int32_t frameHeight = 0; // for which fonts are chosen
    ScriptFiles files;
};

// Reads a whole script, and the files that it names. A line that can't be understood gives an error
// in place of an overlay, and so does what needs a font or tracks that are not there. Where there
// are tracks that the script says nothing of, lines that show them are added.
std::vector<Overlay> ParseScript(std::string_view content, const std::string &file,
                                 const ScriptInputs &inputs, Errors &errors);

} // namespace overlay
