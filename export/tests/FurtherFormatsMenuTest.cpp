// The further formats on the export menu: short keys, masks and default words, the refusal of
// entries without an established layout, and settings words outside a format's mask.
#include "export/ExportFormats.h"
#include "export/ExportRunner.h"
#include "export/UnavailableFormats.h"
#include "export/tests/FurtherFormatsFixture.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tg {
namespace {

TEST(FurtherFormatsMenu, ShortKeysReachTheirEntriesWithTheirMasksAndDefaults)
{
    const struct {
        const char* key;
        ExportFormat format;
        uint32_t mask;
        uint32_t defaultWord;
    } kEntries[] = {
        {"nnxt", ExportFormat::NNXT, 0xFFFFFCFC, 0x20408},
        {"halion", ExportFormat::HALion, 0xFFFFFFFF, 0x20408},
        {"blofeld", ExportFormat::Blofeld, 0xFFFFFFFF, 0x20408},
        {"montage-x7u", ExportFormat::Montage, 0xFFFFF4FF, 0x20408},
        {"montage-x7l", ExportFormat::Montage, 0xFFFFF4FF, 0x20408},
        {"microsampler", ExportFormat::Microsampler, 0xFFFFF49E, 0x20410},
        {"volca", ExportFormat::Volca, 0xFFFCFFFF, 0x40408},
        {"op1", ExportFormat::OP1, 0xFFFCF408, 0x40408},
        {"decent", ExportFormat::DecentPreset, 0xFFFFFFFF, 0x20408},
        {"decent-library", ExportFormat::DecentLibrary, 0xFFFFFFFF, 0x20408},
    };
    for (const auto& entry : kEntries) {
        SCOPED_TRACE(entry.key);
        const std::string text = menuTextForShortKey(entry.key);
        EXPECT_NE(text, entry.key);
        EXPECT_NE(std::find(exportMenuTexts().begin(), exportMenuTexts().end(), text),
                  exportMenuTexts().end());
        const ExportFormatInfo* info = findExportFormat(text);
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(info->format, entry.format);
        EXPECT_EQ(info->allowedMask, entry.mask);
        EXPECT_EQ(correctedSettingsWord(*info, false, 0), entry.defaultWord);
    }
}

TEST(FurtherFormatsMenu, EntriesWithoutALayoutAreRefusedWithTheirReason)
{
    test::RecordedProject recorded;
    const struct {
        const char* key;
        const char* nameLine;
    } kRefused[] = {
        {"halion", "TGexport_HALion():\n\n"},
        {"blofeld", "TGexport_HALion():\n\n"},
        {"nnxt", "TGexport_NNXT():\n\n"},
        {"montage-x7u", "MontageExporter:\n\n"},
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
}

TEST(FurtherFormatsMenu, ASettingsWordOutsideTheMaskIsRefused)
{
    test::RecordedProject recorded;
    ExportRequest request;
    request.menuText = "Volca Sample";
    request.destination = recorded.out + "/Stream";
    request.hasSettings = true;
    request.settings = 0x91020408; // stereo
    std::string message;
    EXPECT_EQ(runExport(*recorded.project, request, recorded.services, message), 0);
    EXPECT_EQ(message, "The export settings 0x91020408 do not suit \"Volca Sample\": its channels "
                       "value 0x20000 is not one of the allowed 0x1C0000.");
    request.settings = 0x91040C08; // two depths at once
    EXPECT_EQ(runExport(*recorded.project, request, recorded.services, message), 0);
    EXPECT_NE(message.find("bit depth value 0xC00"), std::string::npos) << message;
    EXPECT_TRUE(std::filesystem::is_empty(recorded.out));
}

} // namespace
} // namespace tg
