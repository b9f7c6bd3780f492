// The CLI's progress printer: lines when stderr is no terminal, one redrawn bar when it is,
// nothing with --quiet.
#include "cli/Progress.h"

#include <gtest/gtest.h>

using tg::cli::ProgressPrinter;

namespace {

std::string printed(bool quiet, bool terminal)
{
    testing::internal::CaptureStderr();
    {
        ProgressPrinter printer(quiet, terminal);
        printer.report(0.0, "Working on Multisample \"Soft\" (1 of 2)\r\n\r\nRendering and "
                            "writing Key 60 (\"C4\")");
        printer.report(0.001, "Working on Multisample \"Soft\" (1 of 2)\r\n\r\nRendering and "
                              "writing Key 60 (\"C4\")");
        printer.report(0.5, "");
        printer("Normalizing...", 0.5);
    }
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Progress, PlainLinesWithoutATerminalOnlyWhenSomethingChanged)
{
    EXPECT_EQ(printed(false, false),
              "0 % Working on Multisample \"Soft\" (1 of 2) Rendering and writing Key 60 "
              "(\"C4\")\n50 % Normalizing...\n");
}

TEST(Progress, TerminalRedrawsOneBarLineAndEndsIt)
{
    const std::string out = printed(false, true);
    EXPECT_EQ(out.find('\n'), out.size() - 1) << out;
    EXPECT_NE(out.find("\r[###############               ] 50 % Normalizing...\x1b[K"),
              std::string::npos)
        << out;
}

TEST(Progress, QuietPrintsNothing)
{
    EXPECT_EQ(printed(true, false), "");
    EXPECT_EQ(printed(true, true), "");
}
