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

// What a script says, and the fonts that it leaves for what is added to it.
struct ParsedScript {
    std::vector<Overlay> overlays;
    FontChoice font; // of the last line
    FontStore fonts;
};

// Reads a whole script, and the files that it names. A line that can't be understood gives an error
// in place of an overlay, and so does what needs a font or tracks that are not there. Where there
// are tracks that the script says nothing of, lines that show them are added.
ParsedScript ParseScript(std::string_view content, const std::string &file,
                         const ScriptInputs &inputs, Errors &errors);

// Reads one line by itself, which draws something. Throws Failure.
ParsedScript ParseLine(std::string_view line, const ScriptInputs &inputs);

} // namespace overlay
