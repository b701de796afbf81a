// SPDX-License-Identifier: MIT
// cbfconv: makes a CBF font from outline fonts at one size, or from bitmap fonts.
//
// A font is published only after the library itself has loaded it from a temporary file and drawn
// every glyph of it, in every direction, exactly as it was read.
#include "cbfconv/report.h"
#include "cbfconv/verify.h"
#include "common/failure.h"
#include "common/output_file.h"
#include "common/program.h"
#include "common/streams.h"

#include <unistd.h>

namespace cbfconv {

using tool::Failure;

static void Publish(const std::string &path, const cbf::Bytes &bytes, const cbf::Font &font,
                    tool::Progress &progress) {
    tool::OutputFile file(path);
    file.Write(bytes.data(), bytes.size());
    const std::string difference = FirstDifference(file.TemporaryPath(), font, progress);
    if (!difference.empty())
        throw Failure(tool::kBadData, path + ": " + difference);
    file.Publish();
}

// On standard output, unless the font is there.
static void TellResult(const std::string &output, const std::string &text) {
    if (output != kStandardOutput)
        tool::WriteOutput(text);
    else if (!tool::WriteFully(STDERR_FILENO, text.data(), text.size()))
        throw tool::SystemFailure("standard error");
}

static void Convert(const Options &options) {
    tool::CheckTarget(options.output, options.files);
    MergedFont merged;
    cbf::File file;
    {
        tool::Progress progress("cbfconv"); // its line is cleared before anything else is told
        merged = ReadFonts(options, progress);
        file = MakeFile(options, merged);
        if (!merged.font.glyphs.empty())
            Publish(options.output, file.bytes, merged.font, progress);
    }
    TellLeftOut(options.inputs, merged);
    if (merged.font.glyphs.empty())
        throw Failure(tool::kBadData, ListPaths(options.inputs) + ": " +
                                          (options.inputs.size() > 1 ? "have" : "has") +
                                          " none of the characters");
    TellOmissions(options.inputs, merged);
    if (options.verbose)
        TellResult(options.output, DescribeResult(options.output, file, merged.font));
}

static int Run(int argc, char **argv) {
    if (const std::optional<Options> options = ParseOptions(argc, argv))
        Convert(*options);
    return 0;
}

} // namespace cbfconv

int main(int argc, char **argv) {
    return tool::RunProgram("cbfconv", argc, argv, cbfconv::Run);
}
