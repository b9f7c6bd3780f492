// Two minutes of the soak on the real chain: the kept takes' note-ons stay together, and
// memory does not grow from one pass over the keys to the next.
#include "bench/SoakRun.h"
#include "tests/support/TempDir.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <cstdio>

#if defined(__SANITIZE_ADDRESS__)
// AddressSanitizer holds freed blocks back (256 MB by default) before reusing them, which
// would read as growth here; a small quarantine keeps the resident size meaningful.
extern "C" const char* __asan_default_options()
{
    return "quarantine_size_mb=1";
}
#endif

namespace tg::test {
namespace {

TEST(Soak, TwoMinutesOfRecordingKeepTheirTimingAndTheirMemory)
{
    int argc = 1;
    char name[] = "soak";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    TempDir folder;
    SoakOptions options;
    options.minutes = 2.0;
    options.folder = folder.path();
    SoakFigures figures;
    const bool ok = runSoak(options, figures, [](const std::string& line) {
        std::fprintf(stderr, "%s\n", line.c_str());
    });
    std::fprintf(stderr, "%s", soakReport(figures).c_str());
    ASSERT_TRUE(ok) << figures.error;
    ASSERT_GE(figures.passes, 2) << "growth is measured after the first pass";
    EXPECT_GT(figures.takesKept, 20);
    EXPECT_LT(figures.worstTimingErrorMs, 30.0);
    EXPECT_LT(figures.rssAtEndMb - figures.rssAfterFirstPassMb, 8.0);
}

} // namespace
} // namespace tg::test
