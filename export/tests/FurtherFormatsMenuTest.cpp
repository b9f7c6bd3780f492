// The further formats on the export menu: the refusal of entries without an established
// layout, and settings words outside a format's mask refused while those inside it export.
#include "export/ExportFormats.h"
#include "export/ExportRunner.h"
#include "export/UnavailableFormats.h"
#include "export/tests/FurtherFormatsFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace tg {
namespace {

TEST(FurtherFormatsMenu, EntriesWithoutALayoutAreRefusedWithTheirReason)
{
    test::RecordedProject recorded;
    const struct {
        const char* key;
        const char* nameLine;
    } kRefused[] = {
        {"halion", "TGexport_HALion():\n\n"},
        {"blofeld", "TGexport_HALion():\n\n"},
        {"microsampler", "TGexport_MultiSampler():\n\n"},
    };
    for (const auto& entry : kRefused) {
        SCOPED_TRACE(entry.key);
        ExportRequest request;
        request.menuText = menuTextForShortKey(entry.key);
        request.destination = recorded.out + "/Refused";
        std::string message;
        EXPECT_EQ(runExport(*recorded.project, request, recorded.services, message), 0);
        const char* reason = exportUnavailableReason(findExportFormat(request.menuText)->format);
        ASSERT_NE(reason, nullptr);
        EXPECT_EQ(message, std::string(entry.nameLine) + reason);
    }
    EXPECT_TRUE(std::filesystem::is_empty(recorded.out));
    EXPECT_EQ(exportUnavailableReason(ExportFormat::Volca), nullptr);
    EXPECT_EQ(exportUnavailableReason(ExportFormat::NNXT), nullptr);
}

TEST(FurtherFormatsMenu, ASettingsWordOutsideTheMaskIsRefusedAndOneInsideExports)
{
    test::RecordedProject recorded;
    ExportRequest request;
    request.menuText = "Volca Sample";
    request.destination = recorded.out + "/Stream";
    request.hasSettings = true;
    request.settings = 0x91020408; // stereo
    std::string message;
    EXPECT_EQ(runExport(*recorded.project, request, recorded.services, message), 0);
    EXPECT_EQ(message, "The Export Settings word 0x91020408 is not allowed for \"Volca Sample\": "
                       "channels \"Stereo\" is not offered (allowed: \"Mono (mix L and R)\", "
                       "\"Mono (only L)\", \"Mono (only R)\").");
    request.settings = 0x91040C08; // two depths at once
    EXPECT_EQ(runExport(*recorded.project, request, recorded.services, message), 0);
    EXPECT_THAT(message, testing::HasSubstr("holds no single depth value (bits 0x00000C00)"));

    request.menuText = "NI Kontakt (*.sxt)";
    request.destination = recorded.out + "/Patch";
    request.settings = 0x91010108; // keeps the Key-Samples' depth
    EXPECT_EQ(runExport(*recorded.project, request, recorded.services, message), 0);
    EXPECT_THAT(message, testing::HasSubstr("depth \"Same as Key-Sample\" is not offered "
                                            "(allowed: \"16 Bit\", \"24 Bit\")"));
    EXPECT_TRUE(std::filesystem::is_empty(recorded.out));

    request.settings = 0x91010808;
    EXPECT_EQ(runExport(*recorded.project, request, recorded.services, message), 1) << message;
    EXPECT_TRUE(std::filesystem::exists(recorded.out + "/Patch.sxt"));
}

} // namespace
} // namespace tg
