#include "export/SfzText.h"

#include "core/Message.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

namespace {

// A locale whose decimal separator is a comma: de_DE if installed, else one compiled into
// a temporary folder with localedef. Empty when neither works.
std::string useCommaLocale(const tg::test::TempDir& dir)
{
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE"})
        if (std::setlocale(LC_NUMERIC, name) != nullptr)
            return name;
    const std::string command =
        "localedef -i de_DE -f UTF-8 '" + dir.file("de_DE.UTF-8") + "' >/dev/null 2>&1";
    // localedef may warn and still build the locale; setlocale decides.
    (void)std::system(command.c_str());
    setenv("LOCPATH", dir.path().c_str(), 1);
    if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr)
        return "de_DE.UTF-8";
    return {};
}

} // namespace

// The header's exact bytes, groups and regions are checked in the whole SFZ file the SFZ export
// writes; here: numbers under a decimal-comma locale.
TEST(SfzText, DecimalCommaLocaleStillWritesPoints)
{
    tg::test::TempDir dir;
    const std::string saved = std::setlocale(LC_NUMERIC, nullptr);
    const std::string locale = useCommaLocale(dir);
    if (locale.empty())
        GTEST_SKIP() << "no locale with a decimal comma can be set up here";
    ASSERT_EQ(tg::formatText("%g", 0.5), "0,5"); // the locale really is in effect
    const std::string regions = tg::sfzRegions("P", 0, 60, 60, 60, true, 0.125, 1.5);
    const std::string header = tg::sfzHeader();
    std::setlocale(LC_NUMERIC, saved.c_str());
    EXPECT_NE(regions.find(" ampeg_release=0.125 "), std::string::npos) << regions;
    EXPECT_NE(regions.find(" ampeg_attack=1.5 "), std::string::npos) << regions;
    EXPECT_NE(header.find("Version 6.01\r\n"), std::string::npos);
}
