// Decent Sampler presets read back from the published element set: every zone's file, root,
// keys, velocities and loop, the audio as rendered, release zones, and the library archive.
#include "export/decent/DecentSamplerExport.h"

#include "export/tests/FurtherFormatsFixture.h"
#include "export/tests/SyntheticProject.h"
#include "tests/support/ShellCommand.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tg {
namespace {

// The preset elements and the attributes of <group> and <sample> as the format's reference
// lists them (the parts a sample map uses).
const char kPresetDtd[] = R"(<!ELEMENT DecentSampler (groups)>
<!ATTLIST DecentSampler minVersion CDATA #IMPLIED>
<!ELEMENT groups (group*)>
<!ATTLIST groups volume CDATA #IMPLIED globalTuning CDATA #IMPLIED glideTime CDATA #IMPLIED
          glideMode (always|legato|off) #IMPLIED>
<!ELEMENT group (sample*)>
<!ATTLIST group name CDATA #IMPLIED enabled (true|false) #IMPLIED volume CDATA #IMPLIED
          ampVelTrack CDATA #IMPLIED groupTuning CDATA #IMPLIED trigger CDATA #IMPLIED>
<!ELEMENT sample EMPTY>
<!ATTLIST sample path CDATA #REQUIRED rootNote CDATA #REQUIRED loNote CDATA #IMPLIED
          hiNote CDATA #IMPLIED loVel CDATA #IMPLIED hiVel CDATA #IMPLIED start CDATA #IMPLIED
          end CDATA #IMPLIED tuning CDATA #IMPLIED volume CDATA #IMPLIED pan CDATA #IMPLIED
          trigger (attack|release|first|legato|continuous) #IMPLIED
          loopStart CDATA #IMPLIED loopEnd CDATA #IMPLIED loopCrossfade CDATA #IMPLIED
          loopCrossfadeMode (linear|equal_power) #IMPLIED loopEnabled (true|false) #IMPLIED>
)";

class DecentSamplerExport : public ::testing::Test {
  protected:
    test::RecordedProject recorded;
    std::string message;

    std::string exportPreset(bool library)
    {
        EXPECT_EQ(TGexport_DecentSampler(recorded.out, "Strings", library, recorded.project.get(),
                                         {0, 1}, test::RecordedProject::kPlainSettings, false,
                                         message, recorded.services),
                  1)
            << message;
        return recorded.out + (library ? "/Strings.dslibrary" : "/Strings.dspreset");
    }
};

TEST_F(DecentSamplerExport, EveryZoneComesBackWithItsAudioKeysVelocitiesAndLoop)
{
    const std::string preset = exportPreset(false);
    const std::string dtd = recorded.dir.file("dspreset.dtd");
    ASSERT_TRUE(test::writeFileBytes(dtd, kPresetDtd));
    std::string lint;
    EXPECT_EQ(test::runCommand("xmllint --noout --dtdvalid '" + dtd + "' '" + preset + "'", &lint),
              0)
        << lint;

    const std::string xml = test::readFileBytes(preset);
    const auto groups = test::xmlElements(xml, "group");
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0].at("name"), "Soft");
    EXPECT_EQ(groups[1].at("name"), "Loud");

    const auto zones = recorded.zones();
    const auto samples = test::xmlElements(xml, "sample");
    // Four note zones and the release zone of Soft 60.
    ASSERT_EQ(samples.size(), 5u) << xml;
    int releases = 0;
    for (const auto& sample : samples) {
        SCOPED_TRACE(sample.at("path"));
        const int note = std::stoi(sample.at("rootNote"));
        const int layer = sample.at("loVel") == "1" ? 0 : 1;
        EXPECT_EQ(sample.at("hiVel"), layer == 0 ? "64" : "127");
        EXPECT_EQ(std::stoi(sample.at("loNote")), zones.at({layer, note}).first);
        EXPECT_EQ(std::stoi(sample.at("hiNote")), zones.at({layer, note}).second);

        const RenderedKey& rendered = recorded.rendered.at({layer, note});
        const bool release = sample.count("trigger") && sample.at("trigger") == "release";
        releases += release;
        const test::WavImage wav = test::readWavImage(recorded.out + "/" + sample.at("path"));
        ASSERT_TRUE(wav.ok);
        EXPECT_EQ(wav.format.nChannels, layer + 1);
        EXPECT_EQ(wav.format.nSamplesPerSec, 44100u);
        EXPECT_TRUE(wav.data == (release ? rendered.release : rendered.note));

        const bool looped = !release && !(layer == 1 && note == 67);
        EXPECT_EQ(sample.at("loopEnabled"), looped ? "true" : "false");
        if (looped) {
            EXPECT_EQ(std::stoi(sample.at("loopStart")), rendered.loopStart);
            EXPECT_EQ(std::stoi(sample.at("loopEnd")), rendered.loopEnd);
            EXPECT_EQ(sample.at("loopCrossfade"), "0");
        }
    }
    EXPECT_EQ(releases, 1);
}

TEST_F(DecentSamplerExport, LibraryHoldsThePresetFolderAndLeavesNothingElse)
{
    const std::string plain = test::readFileBytes(exportPreset(false));
    std::filesystem::remove_all(recorded.out);
    std::filesystem::create_directories(recorded.out);

    const std::string library = exportPreset(true);
    std::string listing;
    ASSERT_EQ(test::runCommand("unzip -t '" + library + "'", &listing), 0) << listing;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(recorded.out),
                            std::filesystem::directory_iterator()),
              1);
    const std::string unpacked = recorded.dir.file("unpacked");
    ASSERT_EQ(test::runCommand("unzip -q '" + library + "' -d '" + unpacked + "'"), 0);
    EXPECT_EQ(test::readFileBytes(unpacked + "/Strings/Strings.dspreset"), plain);
    for (const auto& sample : test::xmlElements(plain, "sample"))
        EXPECT_TRUE(std::filesystem::exists(unpacked + "/Strings/" + sample.at("path")))
            << sample.at("path");
}

} // namespace
} // namespace tg
