#include "export/ExportFormats.h"
#include "export/SettingsChoices.h"

#include <gtest/gtest.h>

#include <string>

using tg::ExportFormat;

namespace {
ExportFormat formatOf(const std::string& text)
{
    const tg::ExportFormatInfo* info = tg::findExportFormat(text);
    EXPECT_NE(info, nullptr) << text;
    return info ? info->format : ExportFormat::WavFiles;
}
} // namespace

TEST(ExportFormats, EveryMenuTextReachesAnExporterWhateverItsCase)
{
    // Which exporter each text reaches is checked where the commands and menus use it
    // (ExportCommand, TemplateExportCommand, FurtherFormatsMenu).
    for (const std::string& text : tg::exportMenuTexts())
        EXPECT_NE(tg::findExportFormat(text), nullptr) << text;
    EXPECT_EQ(formatOf("Yellow Tools Independence (*.SF2)"), ExportFormat::SoundFont2);
    EXPECT_EQ(formatOf("AIFF-Files (Loop only)"), ExportFormat::Aiff);
    EXPECT_EQ(formatOf("MOTU Machfive (*.wav)"), ExportFormat::SamplerWav);
}

TEST(ExportFormats, EntriesWithoutAKeyStartNoExport)
{
    EXPECT_EQ(tg::findExportFormat("Cakewalk Dimension Preset (*.prog)"), nullptr);
    EXPECT_EQ(tg::findExportFormat("Akai (*.SND)"), nullptr);
}

TEST(ExportFormats, DefaultWordAndCorrectionsPerFormat)
{
    const auto& sf2 = *tg::findExportFormat("SoundFont2 (*.sf2)");
    const auto& prophet = *tg::findExportFormat("Sequential Prophet-X (*.zip)");
    const auto& volca = *tg::findExportFormat("Volca Sample");
    const auto& wav = *tg::findExportFormat("WAV-Files");
    // "Same" rate and 24 bits are corrected for SoundFont; its channels and the other
    // fields of the word stay as they were.
    EXPECT_EQ(tg::correctedSettingsWord(sf2, true, 0xA2010801), 0xA2010408u);
    // Prophet-X allows 48 kHz and 192 kHz here; 96 kHz falls back to the fixed 44.1 kHz.
    EXPECT_EQ(tg::correctedSettingsWord(prophet, true, 0x20420), 0x20408u);
    // Volca allows only the mono modes; stereo becomes mono (mix).
    EXPECT_EQ(tg::correctedSettingsWord(volca, true, 0x20408), 0x40408u);
    EXPECT_EQ(tg::correctedSettingsWord(volca, true, 0x80408), 0x80408u);
    EXPECT_EQ(tg::correctedSettingsWord(wav, true, 0x10101), 0x10101u);
}

// Which format each short key reaches, and with which default word, is checked where the
// export command takes them (ExportCommand, TemplateExportCommand, FurtherFormatsCommand).
TEST(ExportFormats, MenuTextsPassThroughTheShortKeysAndLoopOnlyIsInTheText)
{
    EXPECT_EQ(tg::menuTextForShortKey("Steinberg HALion (*.xml)"), "Steinberg HALion (*.xml)");
    EXPECT_TRUE(tg::isLoopOnlyMenuText(tg::menuTextForShortKey("wav-loop")));
    EXPECT_FALSE(tg::isLoopOnlyMenuText("AIFF-Files"));
}

TEST(ExportFormats, PreselectedWordIsAlwaysOneTheFormatAccepts)
{
    // Whatever was used last, every format starts on values it offers.
    for (const std::string& text : tg::exportMenuTexts()) {
        const tg::ExportFormatInfo& info = *tg::findExportFormat(text);
        for (uint32_t last : {0x20408u, 0x10101u, 0x100840u, 0x80000000u, 0xFFFFFFFFu}) {
            const uint32_t word = tg::preselectedSettingsWord(info, true, last);
            std::string message;
            EXPECT_EQ(tg::checkSettingsWord(info.allowedMask, text, word, message), 1)
                << text << " after 0x" << std::hex << last << ": " << message;
        }
    }
    // Prophet-X starts on its default; 44.1 kHz from a WAV export, the fallback too, is not
    // offered there: 48 kHz is.
    const auto& prophet = *tg::findExportFormat("Sequential Prophet-X (*.zip)");
    EXPECT_EQ(tg::preselectedSettingsWord(prophet, false, 0), 0x20410u);
    EXPECT_EQ(tg::preselectedSettingsWord(prophet, true, 0x80020408u), 0x80020410u);
    // Choices the user made in the flag groups survive.
    const auto& wav = *tg::findExportFormat("WAV-Files");
    EXPECT_EQ(tg::preselectedSettingsWord(wav, true, 0xA2100840u), 0xA2100840u);
}
