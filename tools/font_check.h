// Compares a CBF file, as the library draws and measures it, with the font that it was made from.
#pragma once

#include "cbf_writer.h"
#include "progress.h"

#include <string>

// The first difference, "U+0041: ...", or nothing. Every glyph is drawn and measured in the four
// directions; the fallback glyph is measured at every gap between them, and drawn past their end.
std::string FirstDifference(const std::string &path, const cbf::Font &font, Progress *progress);
