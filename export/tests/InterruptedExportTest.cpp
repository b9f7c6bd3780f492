// A WAV-files export that stops at a Key-Sample it cannot render: the files written before it
// are whole and in place, the files it did not reach are the old ones, and no temporary file is
// left; the same export once the Key-Sample is mended puts every file in place.
#include "audiofile/WavFile.h"
#include "core/Names.h"
#include "export/ExportRunner.h"
#include "export/tests/FurtherFormatsFixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

namespace tg {
namespace {

std::set<std::string> namesIn(const std::string& folder)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

TEST(InterruptedExport, LeavesWholeNewFilesOrTheOldOnesUnderEveryName)
{
    test::RecordedProject recorded;
    ExportRequest request;
    request.menuText = "WAV-Files";
    request.nameTemplate = "<#ms#>-<#mn#>";
    request.hasSettings = true;
    request.settings = test::RecordedProject::kPlainSettings;
    std::string message;

    // What a whole export writes, for comparison.
    const std::string reference = recorded.dir.file("reference");
    std::filesystem::create_directory(reference);
    request.destination = reference;
    ASSERT_EQ(runExport(*recorded.project, request, recorded.services, message), 1) << message;
    const std::set<std::string> names = {"Soft-060.wav", "Soft-060 - release.wav", "Soft-067.wav",
                                         "Loud-060.wav", "Loud-067.wav"};
    ASSERT_EQ(namesIn(reference), names);
    const auto sameAsReference = [&](const std::string& name) {
        return test::readFileBytes(recorded.out + "/" + name) ==
               test::readFileBytes(reference + "/" + name);
    };

    for (const std::string& name : names)
        ASSERT_TRUE(test::writeFileBytes(recorded.out + "/" + name, "old"));
    // The last Key-Sample of the export gets a recording without frames: rendering it fails.
    const std::string lastRecording =
        keySampleFileName(*recorded.project, recorded.project->msl[1], 67);
    const std::string lastBytes = test::readFileBytes(lastRecording);
    ASSERT_EQ(
        writeWav(lastRecording, makeWaveFormat(44100, 2, 16), std::vector<uint8_t>(), message), 1)
        << message;
    request.destination = recorded.out;
    EXPECT_EQ(runExport(*recorded.project, request, recorded.services, message), 0);
    EXPECT_EQ(message.rfind("TGexport_WavFiles():\n\n", 0), 0u) << message;

    EXPECT_EQ(namesIn(recorded.out), names); // no temporary file beside them
    EXPECT_EQ(test::readFileBytes(recorded.out + "/Loud-067.wav"), "old");
    for (const char* name :
         {"Soft-060.wav", "Soft-060 - release.wav", "Soft-067.wav", "Loud-060.wav"})
        EXPECT_TRUE(sameAsReference(name)) << name;

    ASSERT_TRUE(test::writeFileBytes(lastRecording, lastBytes));
    ASSERT_EQ(runExport(*recorded.project, request, recorded.services, message), 1) << message;
    EXPECT_EQ(namesIn(recorded.out), names);
    for (const std::string& name : names)
        EXPECT_TRUE(sameAsReference(name)) << name;
}

} // namespace
} // namespace tg
