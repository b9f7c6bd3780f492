// OP-1 drum kits read back chunk by chunk: the JSON slice table, the slices' audio as rendered,
// and the refusals for what a kit cannot hold.
#include "export/op1/Op1Export.h"

#include "export/tests/FurtherFormatsFixture.h"
#include "export/tests/SyntheticProject.h"
#include "tests/support/Pcm16.h"
#include "tests/support/ShellCommand.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

namespace tg {
namespace {

uint32_t be32(const std::string& b, size_t at)
{
    return uint32_t(uint8_t(b[at])) << 24 | uint32_t(uint8_t(b[at + 1])) << 16 |
           uint32_t(uint8_t(b[at + 2])) << 8 | uint32_t(uint8_t(b[at + 3]));
}

// What a reader of the kit needs: the COMM fields, the JSON and the 16-bit frames.
struct KitImage {
    bool ok = false;
    uint32_t channels = 0, frames = 0, bits = 0;
    std::string rate; // the 10 bytes of the 80-bit rate
    std::string json;
    std::vector<int16_t> audio;
};

KitImage readKit(const std::string& bytes)
{
    KitImage kit;
    if (bytes.size() < 12 || bytes.compare(0, 4, "FORM") != 0 || bytes.compare(8, 4, "AIFF") != 0 ||
        be32(bytes, 4) != bytes.size() - 8)
        return kit;
    bool applBeforeSound = false;
    for (size_t at = 12; at + 8 <= bytes.size();) {
        const std::string id = bytes.substr(at, 4);
        const uint32_t size = be32(bytes, at + 4);
        if (size > bytes.size() - at - 8)
            return kit;
        const size_t body = at + 8;
        if (id == "COMM") {
            kit.channels = uint32_t(uint8_t(bytes[body])) << 8 | uint8_t(bytes[body + 1]);
            kit.frames = be32(bytes, body + 2);
            kit.bits = uint32_t(uint8_t(bytes[body + 6])) << 8 | uint8_t(bytes[body + 7]);
            kit.rate = bytes.substr(body + 8, 10);
        } else if (id == "APPL" && bytes.compare(body, 4, "op-1") == 0) {
            kit.json = bytes.substr(body + 4, size - 4);
            applBeforeSound = true;
        } else if (id == "SSND") {
            for (size_t i = body + 8; i + 1 < body + size; i += 2)
                kit.audio.push_back(int16_t(uint8_t(bytes[i]) << 8 | uint8_t(bytes[i + 1])));
            kit.ok = applBeforeSound;
        }
        at = body + size + (size & 1);
    }
    return kit;
}

std::vector<int64_t> jsonNumbers(const std::string& json, const std::string& key)
{
    std::smatch match;
    std::vector<int64_t> values;
    if (std::regex_search(json, match, std::regex("\"" + key + "\":\\[([-0-9,]*)\\]"))) {
        const std::string list = match[1];
        const std::regex number("-?[0-9]+");
        for (auto it = std::sregex_iterator(list.begin(), list.end(), number);
             it != std::sregex_iterator(); ++it)
            values.push_back(std::stoll(it->str()));
    }
    return values;
}

class Op1Export : public ::testing::Test {
  protected:
    test::RecordedProject recorded;
    std::string message;
    // 44.1 kHz, 16 bit, mono mix, no resampling or level changes, tail after the loop removed.
    static constexpr uint32_t kKitSettings = 0x91040408;
};

TEST_F(Op1Export, EachLayerIsAKitOfItsKeysInKeyOrder)
{
    ASSERT_EQ(TGexport_OP1(recorded.out, "Strings", recorded.project.get(), {0, 1}, kKitSettings,
                           false, message, recorded.services),
              1)
        << message;
    for (int layer : {0, 1}) {
        SCOPED_TRACE(layer);
        const std::string path = recorded.out + (layer ? "/Strings-01.aif" : "/Strings-00.aif");
        const KitImage kit = readKit(test::readFileBytes(path));
        ASSERT_TRUE(kit.ok);
        EXPECT_EQ(kit.channels, 1u);
        EXPECT_EQ(kit.bits, 16u);
        EXPECT_EQ(kit.rate, std::string("\x40\x0E\xAC\x44\0\0\0\0\0\0", 10));
        EXPECT_EQ(kit.frames, kit.audio.size());

        // A real JSON parser accepts the description.
        ASSERT_TRUE(test::writeFileBytes(recorded.dir.file("kit.json"), kit.json));
        std::string parsed;
        EXPECT_EQ(test::runCommand("python3 -m json.tool '" + recorded.dir.file("kit.json") + "'",
                                   &parsed),
                  0)
            << parsed;
        EXPECT_NE(kit.json.find(layer ? "\"name\":\"Loud\"" : "\"name\":\"Soft\""),
                  std::string::npos);

        const auto start = jsonNumbers(kit.json, "start");
        const auto end = jsonNumbers(kit.json, "end");
        ASSERT_EQ(start.size(), 24u);
        ASSERT_EQ(end.size(), 24u);
        int64_t at = 0;
        for (int slot = 0; slot < 2; ++slot) {
            const int note = slot == 0 ? 60 : 67;
            const RenderedKey& rendered = recorded.rendered.at({layer, note});
            const int64_t frames = int64_t(rendered.note.size()) / (2 * (layer + 1));
            EXPECT_EQ(start[size_t(slot)] % 4058, 0);
            EXPECT_EQ(start[size_t(slot)] / 4058, at);
            EXPECT_EQ(end[size_t(slot)] / 4058, at + frames - 1);
            if (layer == 0) { // mono already: the slice is the rendered audio itself
                for (int64_t i = 0; i < frames; ++i)
                    ASSERT_EQ(kit.audio[size_t(at + i)], test::pcm16At(rendered.note, size_t(i)))
                        << i;
            }
            at += frames;
        }
        EXPECT_EQ(at, int64_t(kit.audio.size()));
        for (size_t slot = 2; slot < 24; ++slot)
            EXPECT_EQ(start[slot], end[slot]) << slot;
    }
}

TEST_F(Op1Export, StereoIsRefusedAndNothingIsWritten)
{
    EXPECT_EQ(TGexport_OP1(recorded.out, "Kit", recorded.project.get(), {1}, 0x91020408, false,
                           message, recorded.services),
              0);
    EXPECT_EQ(message, "TGexport_OP1():\n\nan OP-1 drum kit holds 44.1 KHz mono 16 bit audio; "
                       "Key 60 of \"Loud\" is 44100 Hz, 2 channel(s), 16 bit");
    EXPECT_FALSE(std::filesystem::exists(recorded.out + "/Kit.aif"));
}

} // namespace
} // namespace tg
