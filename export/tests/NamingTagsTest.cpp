#include "export/NamingTags.h"

#include "core/Message.h"

#include <gtest/gtest.h>

#include <memory>

namespace {
std::unique_ptr<tg::Project> project()
{
    auto p = std::make_unique<tg::Project>();
    tg::copyText(p->name, "Grand");
    p->mslCount = 1;
    tg::copyText(p->msl[0].name, "Soft");
    tg::copyText(p->msl[0].keys[61].name, "Take2");
    return p;
}
} // namespace

TEST(NamingTags, LongDefaultExpandsEveryTag)
{
    auto p = project();
    EXPECT_EQ(tg::expandNamingTags(*p, p->msl[0], 3, 61, tg::kLongNamingDefault),
              "Grand-03-Soft-061-Take2-C#4");
    EXPECT_EQ(tg::expandNamingTags(*p, p->msl[0], 12, 5, tg::kShortNamingDefault), "noname-12-005");
}

TEST(NamingTags, UnknownTagsAndLoneAnglesAreCopied)
{
    auto p = project();
    EXPECT_EQ(tg::expandNamingTags(*p, p->msl[0], 0, 60, "<a<#ms<#n#>><#x#><#prj#"),
              "<a<#msC4><#x#><#prj#");
    EXPECT_EQ(tg::expandNamingTags(*p, p->msl[0], 0, 60, "<<#ms#>>"), "<Soft>");
}

TEST(NamingTags, WarningsStandUnderTheOppositeConditions)
{
    const std::string noLayer = "WARNING: The naming scheme does not contain \"<#mn#>\" or "
                                "\"<#n#>\". This might result in name conflicts.\r\n\r\n";
    const std::string noNote =
        "WARNING: the AIFF - Name does not contain the name (\"<#ms#>\") or the index "
        "(\"<#msi#>\")of the Multi-Sample(s).  This might result in name conflicts.\r\nAdd "
        "\"<#ms#>\") and/or \"<#msi#>\" if the Project has more than one Multi-Sample.\r\n\r\n";
    EXPECT_EQ(tg::namingSchemeWarnings(tg::kLongNamingDefault), "");
    EXPECT_EQ(tg::namingSchemeWarnings("x-<#mn#>"), noLayer);
    EXPECT_EQ(tg::namingSchemeWarnings("x-<#msi#>"), noNote);
    EXPECT_EQ(tg::namingSchemeWarnings("x"), noLayer + noNote);
}
