// Montage files read back by a reader written from the format note: header, catalogue, the
// entry and data blocks, every key bank against the exported zone, and the audio against what
// the renderer gave each Key-Sample.
#include "export/montage/MontageExport.h"
#include "core/Message.h"
#include "core/Names.h"
#include "export/ExportProgress.h"
#include "export/ExportRunner.h"
#include "export/tests/FurtherFormatsFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

namespace tg {
namespace {

// Fields of the file, bounds-checked: a read past the end throws and fails the test.
uint32_t be32(const std::string& b, size_t at)
{
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i)
        value = value << 8 | uint8_t(b.at(at + i));
    return value;
}

uint32_t le(const std::string& b, size_t at, size_t width = 4)
{
    uint32_t value = 0;
    for (size_t i = width; i-- > 0;)
        value = value << 8 | uint8_t(b.at(at + i));
    return value;
}

struct KeyBank {
    int lowKey, highKey, lowVel, highVel, root, channels, loopMode;
    uint32_t rate, loopStart, loopEnd, sampleNumber, frames;
    std::string audio;
};

struct Waveform {
    std::string name;
    std::vector<KeyBank> banks;
};

// The data item an entry body points to in the block at `block`, checked against its size.
std::string itemOf(const std::string& b, size_t entry, size_t block)
{
    const size_t item = block + be32(b, entry + 4);
    EXPECT_EQ(b.substr(item, 4), "Data");
    EXPECT_EQ(be32(b, item + 4), be32(b, entry));
    return b.substr(item + 8, be32(b, entry));
}

// The name of an entry whose body runs from `body` to `end`: NUL-terminated inside the body.
std::string entryName(const std::string& b, size_t body, size_t end)
{
    const size_t terminator = b.find('\0', body + 22);
    EXPECT_LT(terminator, end);
    return b.substr(body + 22, std::min(terminator, end) - (body + 22));
}

KeyBank keyBank(const std::string& banks, size_t at)
{
    KeyBank bank;
    bank.lowKey = le(banks, at, 1);
    bank.highKey = le(banks, at + 1, 1);
    bank.lowVel = le(banks, at + 2, 1);
    bank.highVel = le(banks, at + 3, 1);
    bank.root = le(banks, at + 8, 1);
    bank.channels = le(banks, at + 11, 1);
    EXPECT_EQ(le(banks, at + 14, 1), 5u); // 16-bit linear
    bank.loopMode = le(banks, at + 15, 1);
    bank.rate = le(banks, at + 36);
    bank.loopStart = 16 * le(banks, at + 44) + le(banks, at + 18, 1);
    bank.loopEnd = le(banks, at + 48);
    bank.sampleNumber = le(banks, at + 56);
    bank.frames = le(banks, at + 60);
    return bank;
}

std::vector<Waveform> readLibrary(const std::string& b)
{
    EXPECT_EQ(b.substr(0, 32), std::string("YAMAHA-YSFC\0\0\0\0\0"
                                           "4.0.5\0\0\0\0\0\0\0\0\0\0\0",
                                           32));
    const uint32_t catalogueSize = be32(b, 32);
    EXPECT_EQ(catalogueSize, 14u * 8);
    EXPECT_EQ(be32(b, 48), 81u);
    std::map<std::string, size_t> blocks;
    size_t next = 64 + catalogueSize + be32(b, 48);
    for (size_t at = 64; at < 64 + catalogueSize; at += 8) {
        const std::string id = b.substr(at, 4);
        EXPECT_EQ(be32(b, at + 4), next) << id; // the blocks follow each other in this order
        EXPECT_EQ(b.substr(next, 4), id);
        blocks[id] = next;
        next += 8 + be32(b, next + 4);
    }
    EXPECT_EQ(next, b.size());

    std::vector<Waveform> waveforms;
    const uint32_t count = be32(b, blocks.at("EWFM") + 8);
    for (const auto& [id, at] : blocks) // only the waveform blocks hold items
        EXPECT_EQ(be32(b, at + 8),
                  id == "EWFM" || id == "EWIM" || id == "DWFM" || id == "DWIM" ? count : 0u)
            << id;
    EXPECT_EQ(be32(b, 60), 10001 + 2 * count);
    size_t bankEntry = blocks.at("EWFM") + 12, audioEntry = blocks.at("EWIM") + 12;
    for (uint32_t w = 0; w < count; ++w) {
        EXPECT_EQ(b.substr(bankEntry, 4) + b.substr(audioEntry, 4), "EntrEntr");
        const size_t bankBody = bankEntry + 8, audioBody = audioEntry + 8;
        EXPECT_EQ(be32(b, bankBody + 8), 0x10001 + w);
        EXPECT_EQ(be32(b, audioBody + 8), 0x10001 + w);
        EXPECT_EQ(be32(b, bankBody + 18), 10001 + 2 * w);
        EXPECT_EQ(be32(b, audioBody + 18), 10002 + 2 * w);
        const std::string name = entryName(b, bankBody, bankBody + be32(b, bankEntry + 4));
        EXPECT_EQ(name, entryName(b, audioBody, audioBody + be32(b, audioEntry + 4)));
        EXPECT_EQ(name.substr(0, 4), "256:");

        Waveform waveform{name.substr(4), {}};
        const std::string banks = itemOf(b, bankBody, blocks.at("DWFM"));
        const std::string audio = itemOf(b, audioBody, blocks.at("DWIM"));
        const uint32_t bankCount = le(banks, 0, 2);
        EXPECT_EQ(banks.size(), 4 + 64 * size_t(bankCount));
        EXPECT_EQ(be32(audio, 0), bankCount);
        size_t part = 4;
        for (uint32_t k = 0; k < bankCount; ++k) {
            KeyBank bank = keyBank(banks, 4 + 64 * size_t(k));
            EXPECT_EQ(be32(audio, part), 2 * bank.frames);
            bank.audio = audio.substr(part + 4, 2 * size_t(bank.frames));
            part += 4 + bank.audio.size();
            waveform.banks.push_back(bank);
        }
        EXPECT_EQ(part, audio.size());
        waveforms.push_back(waveform);
        bankEntry += 8 + be32(b, bankEntry + 4);
        audioEntry += 8 + be32(b, audioEntry + 4);
    }
    return waveforms;
}

class MontageExport : public ::testing::Test {
  protected:
    // The fixture records what was rendered by the key's place in the Project, which keys
    // rendered ahead on workers (copies) do not have.
    void SetUp() override { recorded.services.renderThreads = 1; }
    void TearDown() override { setExportProgressCallback({}); }

    // Renames the first layer, and its Key-Sample files with it.
    void renameFirstLayer(const char* name)
    {
        TGmsl& msl = recorded.project->msl[0];
        const std::string before[] = {keySampleFileName(*recorded.project, msl, 60),
                                      keySampleFileName(*recorded.project, msl, 67)};
        copyText(msl.name, name);
        std::filesystem::rename(before[0], keySampleFileName(*recorded.project, msl, 60));
        std::filesystem::rename(before[1], keySampleFileName(*recorded.project, msl, 67));
    }

    int exportAs(const char* menuText, const std::string& destination, uint32_t word)
    {
        ExportRequest request;
        request.menuText = menuText;
        request.destination = destination;
        request.hasSettings = true;
        request.settings = word;
        return runExport(*recorded.project, request, recorded.services, message);
    }

    test::RecordedProject recorded;
    std::string message;
    // 44.1 kHz, 16 bit, channels as recorded, no resampling or level changes, tail removed.
    static constexpr uint32_t kSettings = 0x91010408;
};

TEST_F(MontageExport, EachLayerIsAWaveformWhoseKeyBanksPlayTheRenderedKeySamples)
{
    ASSERT_EQ(exportAs("Yamaha Montage (*.X7U)", recorded.out + "/Strings.X7U", kSettings), 1)
        << message;
    const std::string user = test::readFileBytes(recorded.out + "/Strings.X7U");
    const std::vector<Waveform> waveforms = readLibrary(user);
    ASSERT_EQ(waveforms.size(), 2u);
    const auto zones = recorded.zones();
    uint32_t sampleNumber = 0;
    for (int layer : {0, 1}) {
        const Waveform& waveform = waveforms[size_t(layer)];
        EXPECT_EQ(waveform.name, layer ? "Loud" : "Soft");
        const size_t channels = size_t(layer) + 1;
        ASSERT_EQ(waveform.banks.size(), 2 * channels);
        for (size_t k = 0; k < waveform.banks.size(); ++k) {
            const KeyBank& bank = waveform.banks[k];
            const int note = k < channels ? 60 : 67;
            SCOPED_TRACE(testing::Message() << "layer " << layer << " note " << note);
            const RenderedKey& rendered = recorded.rendered.at({layer, note});
            EXPECT_EQ(bank.root, note);
            EXPECT_EQ(std::make_pair(bank.lowKey, bank.highKey), zones.at({layer, note}));
            EXPECT_EQ(bank.lowVel, layer ? 65 : 1);
            EXPECT_EQ(bank.highVel, layer ? 127 : 64);
            EXPECT_EQ(bank.channels, int(channels));
            EXPECT_EQ(bank.rate, 44100u);
            EXPECT_EQ(bank.sampleNumber, k % channels == 0 ? ++sampleNumber : sampleNumber);
            EXPECT_EQ(bank.frames, rendered.note.size() / (2 * channels));
            const bool looped = !(layer == 1 && note == 67);
            EXPECT_EQ(bank.loopMode, looped ? 0 : 1);
            EXPECT_EQ(bank.loopStart, looped ? uint32_t(rendered.loopStart) : 0u);
            EXPECT_EQ(bank.loopEnd, looped ? uint32_t(rendered.loopEnd) : bank.frames);
            // This key bank holds channel k % channels of the rendered audio.
            std::string channel;
            for (size_t i = (k % channels) * 2; i + 1 < rendered.note.size(); i += 2 * channels)
                channel.append(reinterpret_cast<const char*>(&rendered.note[i]), 2);
            EXPECT_TRUE(bank.audio == channel);
        }
    }

    // The library file has the same bytes; its folder is created on the way.
    const std::string library = recorded.out + "/not/yet/there/Strings.X7L";
    ASSERT_EQ(exportAs("Yamaha Montage (*.X7L)", library, kSettings), 1) << message;
    EXPECT_TRUE(test::readFileBytes(library) == user);
}

TEST_F(MontageExport, ProgressKeepsClimbingThroughTheWritingToTheEnd)
{
    std::vector<double> fractions;
    bool wrote = false;
    setExportProgressCallback([&](double fraction, const std::string& text) {
        fractions.push_back(fraction);
        wrote = wrote || text == "Writing the Montage file.";
    });
    ASSERT_EQ(exportAs("Yamaha Montage (*.X7U)", recorded.out + "/Strings.X7U", kSettings), 1)
        << message;
    EXPECT_TRUE(wrote);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    ASSERT_GE(fractions.size(), 2u);
    EXPECT_DOUBLE_EQ(fractions[fractions.size() - 2], 1.0); // the last write, before "done"
}

TEST_F(MontageExport, ALayerWithoutKeySamplesInItsKeyRangeMakesNoWaveform)
{
    recorded.project->msl[0].KBrangeIn = 80;
    recorded.project->msl[0].KBrangeOut = 90;
    ASSERT_EQ(exportAs("Yamaha Montage (*.X7U)", recorded.out + "/Strings.X7U", kSettings), 1)
        << message;
    const std::vector<Waveform> waveforms =
        readLibrary(test::readFileBytes(recorded.out + "/Strings.X7U"));
    ASSERT_EQ(waveforms.size(), 1u);
    EXPECT_EQ(waveforms[0].name, "Loud");
}

TEST_F(MontageExport, WaveformNamesAreUpToTwentyPlainAsciiCharactersWithoutAColon)
{
    // A name is refused before the layer's first Key-Sample is rendered.
    for (const char* name : {"Soft strings, layer 1", "Soft:strings", "Soft stri\xC3\xA4ngs"}) {
        renameFirstLayer(name);
        EXPECT_EQ(exportAs("Yamaha Montage (*.X7U)", recorded.out + "/Strings.X7U", kSettings), 0);
        EXPECT_EQ(message, std::string("MontageExporter:\n\nthe Multi-Sample name \"") + name +
                               "\" is no Montage waveform name: 1 to 20 characters of plain "
                               "ASCII without ':'");
    }
    EXPECT_TRUE(std::filesystem::is_empty(recorded.out));
    renameFirstLayer("Soft strings layer 1");
    ASSERT_EQ(exportAs("Yamaha Montage (*.X7U)", recorded.out + "/Strings.X7U", kSettings), 1)
        << message;
    EXPECT_EQ(readLibrary(test::readFileBytes(recorded.out + "/Strings.X7U"))[0].name,
              "Soft strings layer 1");
}

TEST_F(MontageExport, WhatAWaveformCannotHoldIsRefusedAndNothingIsWritten)
{
    const std::string target = recorded.out + "/Strings.X7U";
    EXPECT_EQ(exportAs("Yamaha Montage (*.X7U)", target, 0x91010410), 0);
    EXPECT_EQ(message, "MontageExporter:\n\nMontage waveforms hold 44.1KHz 16 bit mono or stereo "
                       "audio; Key 60 of \"Soft\" is 48000 Hz, 1 channel(s), 16 bit");
    EXPECT_EQ(exportAs("Yamaha Montage (*.X7U)", target, 0x91010808), 0);
    EXPECT_THAT(message, testing::HasSubstr("depth \"24 Bit\" is not offered"));
    EXPECT_TRUE(std::filesystem::is_empty(recorded.out));
}

} // namespace
} // namespace tg
