#include "export/SfzText.h"

#include "core/Message.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <memory>

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

TEST(SfzText, HeaderBytesAndGroupExampleMatchExactly)
{
    tg::TGmsl msl;
    tg::copyText(msl.name, "Soft");
    msl.range_start = 1;
    msl.range_end = 64;
    const std::string dashes =
        "//-----------------------------------------------------------------------------------\r\n";
    ASSERT_EQ(dashes.size(), 2u + 83u + 2u);
    const std::string expected =
        dashes +
        "// sfz Definition File\r\n"
        "// \r\n"
        "// this file was created with Corvane's Tonegrabber\xCE\xA0Version 6.01\r\n"
        "// for Cakewalk's virtual sampler \"Dimension\".\r\n" +
        dashes +
        "\r\n"
        "\r\n"
        "<group> // parameters for the multi-sample \"Soft\"\r\n"
        "lovel=1\r\n"
        "hivel=64\r\n"
        "\r\n"
        "<region> trigger=attack  pitch_keycenter=60 lokey=58 hikey=61 ampeg_release=0 "
        "sample=Piano-000-060-C4.wav\r\n"
        "<region> trigger=release pitch_keycenter=60 lokey=58 hikey=61 ampeg_attack=0 "
        "sample=Piano-000-060-C4-release.wav\r\n";
    EXPECT_EQ(tg::sfzHeader() + tg::sfzGroup(msl) +
                  tg::sfzRegions("Piano", 0, 60, 58, 61, true, 0.0, 0.0),
              expected);
}

TEST(SfzText, NoVelocityLayerAndNoReleasePart)
{
    tg::TGmsl msl;
    tg::copyText(msl.name, "Pad");
    msl.mapTo = 1;
    EXPECT_EQ(tg::sfzGroup(msl),
              "\r\n\r\n<group> // parameters for the multi-sample \"Pad\"\r\n\r\n");
    EXPECT_EQ(tg::sfzRegions("Piano", 2, 61, 61, 63, false, 0.5, 0.25),
              "<region> trigger=attack  pitch_keycenter=61 lokey=61 hikey=63 "
              "sample=Piano-002-061-C#4.wav\r\n");
}

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
