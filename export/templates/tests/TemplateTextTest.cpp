// Placeholder filling, Latin-1 conversion, XML escapes and the open velocity bounds. Floats with
// eight decimals, user texts cut to 24 characters and the one-sided velocity bounds are checked
// in the written files (BitwigExporter, CardExport).
#include "export/templates/TemplateText.h"
#include "export/xml/XmlText.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

TEST(TemplateText, FillsEveryOccurrenceOnceAndLeavesOtherKeys)
{
    std::string text = "<a x=\"###key###\" y=\"###key###\" z=\"###keyRoot###\"/>";
    fillInt(text, "key", 42);
    EXPECT_EQ(text, "<a x=\"42\" y=\"42\" z=\"###keyRoot###\"/>");
    // A value holding the placeholder itself is not filled again.
    text = "###a######a###";
    fillBytes(text, "a", "###a###");
    EXPECT_EQ(text, "###a######a###");
}

TEST(TemplateText, Latin1FromUtf8AndPassThroughOfLatin1)
{
    EXPECT_EQ(toLatin1("Fl\xC3\xBCgel"), "Fl\xFCgel"); // UTF-8 u-umlaut
    EXPECT_EQ(toLatin1("Fl\xFCgel"), "Fl\xFCgel");     // already Latin-1
    EXPECT_EQ(toLatin1("\xE2\x82\xAC 5"), "? 5");      // euro sign has no Latin-1 code
    EXPECT_EQ(toLatin1("cut\xC3"), "cut\xC3");         // truncated sequence: kept as bytes
    EXPECT_EQ(toLatin1("\xC0\xAF"), "\xC0\xAF");       // overlong form is not UTF-8
}

TEST(TemplateText, XmlSpecialCharactersAreEscaped)
{
    EXPECT_EQ(escapeXml("a<b & \"c\" 'd'>"), "a&lt;b &amp; &quot;c&quot; &apos;d&apos;&gt;");
    EXPECT_EQ(escapeXml("tab\there\x01"), "tab here ") << "control characters become blanks";
}

TEST(TemplateText, BothOpenVelocityBoundsAreRemoved)
{
    std::string full = "<velocity low=\"0\" high=\"127\"/>";
    removeOpenVelocityBounds(full, 0, 127);
    EXPECT_EQ(full, "<velocity/>");
}

} // namespace
} // namespace tg
