// Placeholder filling, Latin-1 conversion and the open velocity bounds.
#include "export/templates/TemplateText.h"
#include "export/xml/XmlText.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

TEST(TemplateText, FillsEveryOccurrenceAndLeavesOtherKeys)
{
    std::string text = "<a x=\"###key###\" y=\"###key###\" z=\"###keyRoot###\"/>";
    fillInt(text, "key", 42);
    EXPECT_EQ(text, "<a x=\"42\" y=\"42\" z=\"###keyRoot###\"/>");
}

TEST(TemplateText, FloatsHaveEightDecimals)
{
    std::string text = "###v### ###w###";
    fillFloat(text, "v", 623932.0);
    fillFloat(text, "w", 1.0 / 3.0);
    EXPECT_EQ(text, "623932.00000000 0.33333333");
}

TEST(TemplateText, ValueHoldingHashesIsNotRescanned)
{
    std::string text = "###a######a###";
    fillBytes(text, "a", "###a###");
    EXPECT_EQ(text, "###a######a###");
}

TEST(TemplateText, Latin1FromUtf8AndPassThroughOfLatin1)
{
    EXPECT_EQ(toLatin1("Fl\xC3\xBCgel"), "Fl\xFCgel");      // UTF-8 u-umlaut
    EXPECT_EQ(toLatin1("Fl\xFCgel"), "Fl\xFCgel");          // already Latin-1
    EXPECT_EQ(toLatin1("\xE2\x82\xAC 5"), "? 5");           // euro sign has no Latin-1 code
    EXPECT_EQ(toLatin1("cut\xC3"), "cut\xC3");              // truncated sequence: kept as bytes
    EXPECT_EQ(toLatin1("\xC0\xAF"), "\xC0\xAF");            // overlong form is not UTF-8
}

TEST(TemplateText, XmlSpecialCharactersAreEscaped)
{
    EXPECT_EQ(escapeXml("a<b & \"c\" 'd'>"), "a&lt;b &amp; &quot;c&quot; &apos;d&apos;&gt;");
    EXPECT_EQ(escapeXml("tab\there\x01"), "tab here ") << "control characters become blanks";
}

TEST(TemplateText, OpenVelocityBoundsAreRemoved)
{
    std::string full = "<velocity low=\"0\" high=\"127\"/>";
    removeOpenVelocityBounds(full, 0, 127);
    EXPECT_EQ(full, "<velocity/>");

    std::string lower = "<velocity low=\"0\" high=\"63\"/>";
    removeOpenVelocityBounds(lower, 0, 63);
    EXPECT_EQ(lower, "<velocity high=\"63\"/>");

    std::string upper = "<velocity low=\"64\" high=\"127\"/>";
    removeOpenVelocityBounds(upper, 64, 127);
    EXPECT_EQ(upper, "<velocity low=\"64\"/>");
}

TEST(TemplateText, UserTextsAreCutTo24Characters)
{
    EXPECT_EQ(firstCharacters("abcdefghijklmnopqrstuvwxyz", 24), "abcdefghijklmnopqrstuvwx");
    EXPECT_EQ(firstCharacters("short", 24), "short");
}

} // namespace
} // namespace tg
