// Montage files read back by a reader written from the format note: header, catalogue, the
// entry and data blocks, every key bank against the exported zone, and the audio against what
// the renderer gave each Key-Sample.
#include "core/Message.h"
#include "core/Names.h"
#include "export/ExportRunner.h"
#include "export/tests/FurtherFormatsFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace tg {
namespace {

struct Reader {
    const std::string& b;
    bool ok = true;

    uint32_t fail()
    {
        ok = false;
        return 0;
    }
    uint32_t be(size_t at)
    {
        if (at + 4 > b.size())
            return fail();
        return uint32_t(uint8_t(b[at])) << 24 | uint32_t(uint8_t(b[at + 1])) << 16 |
               uint32_t(uint8_t(b[at + 2])) << 8 | uint32_t(uint8_t(b[at + 3]));
    }
    uint32_t le(size_t at, size_t width = 4)
    {
        if (at + width > b.size())
            return fail();
        uint32_t value = 0;
        for (size_t i = width; i-- > 0;)
            value = value << 8 | uint8_t(b[at + i]);
        return value;
    }
    uint8_t byte(size_t at) { return at < b.size() ? uint8_t(b[at]) : uint8_t(fail()); }
    std::string text(size_t at, size_t width)
    {
        if (at + width > b.size())
            return std::string(fail(), '\0');
        return b.substr(at, width);
    }
};

struct KeyBank {
    int lowKey, highKey, lowVel, highVel, root, channels, loopMode;
    uint32_t rate, loopStart, loopEnd, sampleNumber, frames;
    std::string audio;
};

struct Waveform {
    std::string name;
    std::vector<KeyBank> banks;
};

struct Library {
    bool ok = false;
    std::vector<Waveform> waveforms;
};

// The data item an entry (its body) points to in `block`, checked against the entry's size.
std::string itemOf(Reader& r, size_t entry, size_t block)
{
    const uint32_t size = r.be(entry);
    const size_t item = block + r.be(entry + 4);
    EXPECT_EQ(r.text(item, 4), "Data");
    EXPECT_EQ(r.be(item + 4), size);
    return r.text(item + 8, size);
}

Library readLibrary(const std::string& bytes)
{
    Library library;
    Reader r{bytes};
    EXPECT_EQ(r.text(0, 16), std::string("YAMAHA-YSFC\0\0\0\0\0", 16));
    EXPECT_EQ(r.text(16, 16), std::string("4.0.5\0\0\0\0\0\0\0\0\0\0\0", 16));
    const uint32_t catalogueSize = r.be(32);
    const uint32_t librarySize = r.be(48);
    EXPECT_EQ(librarySize, 81u);

    std::map<std::string, size_t> blocks;
    size_t expected = 64 + catalogueSize + librarySize;
    for (size_t at = 64; at < 64 + catalogueSize; at += 8) {
        const std::string id = r.text(at, 4);
        EXPECT_EQ(r.be(at + 4), expected) << id; // blocks follow each other in catalogue order
        EXPECT_EQ(r.text(expected, 4), id);
        blocks[id] = expected;
        expected += 8 + r.be(expected + 4);
    }
    EXPECT_EQ(expected, bytes.size());
    EXPECT_EQ(catalogueSize, 14u * 8);
    if (!r.ok || !blocks.count("EWFM") || !blocks.count("EWIM") || !blocks.count("DWFM") ||
        !blocks.count("DWIM"))
        return library;

    const uint32_t count = r.be(blocks["EWFM"] + 8);
    EXPECT_EQ(r.be(60), 10001 + 2 * count);
    size_t bankEntry = blocks["EWFM"] + 12, audioEntry = blocks["EWIM"] + 12;
    for (uint32_t w = 0; w < count && r.ok; ++w) {
        EXPECT_EQ(r.text(bankEntry, 4), "Entr");
        EXPECT_EQ(r.text(audioEntry, 4), "Entr");
        const size_t bankBody = bankEntry + 8, audioBody = audioEntry + 8;
        EXPECT_EQ(r.be(bankBody + 8), 0x10001 + w);
        EXPECT_EQ(r.be(audioBody + 8), 0x10001 + w);
        EXPECT_EQ(r.be(bankBody + 18), 10001 + 2 * w);
        EXPECT_EQ(r.be(audioBody + 18), 10002 + 2 * w);
        Waveform waveform;
        const std::string name = bytes.c_str() + bankBody + 22;
        EXPECT_EQ(name, std::string(bytes.c_str() + audioBody + 22));
        EXPECT_EQ(name.substr(0, 4), "256:");
        waveform.name = name.substr(4);

        const std::string banks = itemOf(r, bankBody, blocks["DWFM"]);
        const std::string audio = itemOf(r, audioBody, blocks["DWIM"]);
        Reader kb{banks}, au{audio};
        const uint32_t bankCount = kb.le(0, 2);
        EXPECT_EQ(banks.size(), 4 + 64 * size_t(bankCount));
        EXPECT_EQ(au.be(0), bankCount);
        size_t part = 4;
        for (uint32_t k = 0; k < bankCount && kb.ok && au.ok; ++k) {
            const size_t at = 4 + 64 * size_t(k);
            KeyBank bank{kb.byte(at),
                         kb.byte(at + 1),
                         kb.byte(at + 2),
                         kb.byte(at + 3),
                         kb.byte(at + 8),
                         kb.byte(at + 11),
                         kb.byte(at + 15),
                         kb.le(at + 36),
                         16 * kb.le(at + 44) + kb.byte(at + 18),
                         kb.le(at + 48),
                         kb.le(at + 56),
                         kb.le(at + 60),
                         ""};
            EXPECT_EQ(kb.byte(at + 14), 5); // 16-bit linear
            EXPECT_EQ(kb.byte(at + 16), 0); // not encrypted
            const uint32_t size = au.be(part);
            EXPECT_EQ(size, 2 * bank.frames);
            bank.audio = au.text(part + 4, size);
            part += 4 + size;
            waveform.banks.push_back(bank);
        }
        EXPECT_EQ(part, audio.size());
        library.waveforms.push_back(waveform);
        bankEntry += 8 + r.be(bankEntry + 4);
        audioEntry += 8 + r.be(audioEntry + 4);
    }
    library.ok = r.ok;
    return library;
}

class MontageExport : public ::testing::Test {
  protected:
    // The fixture records what was rendered by the key's place in the Project, which keys
    // rendered ahead on workers (copies) do not have.
    void SetUp() override { recorded.services.renderThreads = 1; }

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
    const Library library = readLibrary(user);
    ASSERT_TRUE(library.ok);
    ASSERT_EQ(library.waveforms.size(), 2u);
    const auto zones = recorded.zones();
    uint32_t sampleNumber = 0;
    for (int layer : {0, 1}) {
        const Waveform& waveform = library.waveforms[size_t(layer)];
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

    ASSERT_EQ(exportAs("Yamaha Montage (*.X7L)", recorded.out + "/Strings.X7L", kSettings), 1)
        << message;
    EXPECT_TRUE(test::readFileBytes(recorded.out + "/Strings.X7L") == user);
}

TEST_F(MontageExport, WhatAWaveformCannotHoldIsRefusedAndNothingIsWritten)
{
    const std::string target = recorded.out + "/Strings.X7U";
    EXPECT_EQ(exportAs("Yamaha Montage (*.X7U)", target, 0x91010410), 0);
    EXPECT_EQ(message, "MontageExporter:\n\nMontage waveforms hold 44.1 KHz 16 bit mono or stereo "
                       "audio; Key 60 of \"Soft\" is 48000 Hz, 1 channel(s), 16 bit");
    EXPECT_EQ(exportAs("Yamaha Montage (*.X7U)", target, 0x91010808), 0);
    EXPECT_THAT(message, testing::HasSubstr("depth \"24 Bit\" is not offered"));
    // The recordings are named after their Multi-Sample: they move with the new name.
    TGmsl& loud = recorded.project->msl[1];
    std::vector<std::string> before;
    for (int note : {60, 67})
        before.push_back(keySampleFileName(*recorded.project, loud, note));
    copyText(loud.name, "Loud strings, layer 2");
    for (int i : {0, 1})
        std::filesystem::rename(before[size_t(i)],
                                keySampleFileName(*recorded.project, loud, i ? 67 : 60));
    EXPECT_EQ(exportAs("Yamaha Montage (*.X7U)", target, kSettings), 0);
    EXPECT_EQ(message, "MontageExporter:\n\nthe Multi-Sample name \"Loud strings, layer 2\" is no "
                       "Montage waveform name: 1 to 20 characters of plain ASCII without ':'");
    EXPECT_TRUE(std::filesystem::is_empty(recorded.out));
}

} // namespace
} // namespace tg
