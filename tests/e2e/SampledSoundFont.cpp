#include "tests/e2e/SampledSoundFont.h"

#include "analysis/BatchAuto.h"
#include "core/ProjectFile.h"
#include "devices/InstrumentSpec.h"
#include "export/ExportAudioServices.h"
#include "export/ExportFormats.h"
#include "export/ExportRunner.h"
#include "recording/OfflineTakeSource.h"
#include "recording/ProjectSetup.h"
#include "recording/RecordingRun.h"

#include <gtest/gtest.h>

namespace tg::test {

void sampleIntoSoundFont(Model& model, const std::string& folder, const SampledPreset& what)
{
    ProjectSetupRecord setup;
    setup.name = what.name;
    setup.dataPath = folder;
    setup.audioInDevice = kPluginDeviceName;
    setup.midiOutDevice = kPluginDeviceName;
    setup.pluginRecording = true;
    setup.keyCount = 37; // 48..84
    setup.keyStep = what.keyStep;
    setup.noteLength = 2.0;
    setup.releaseLength = what.releaseLength;
    setup.autoLoop = true;
    ASSERT_TRUE(createProjectFromSetup(model, setup).ok());
    Project& project = *model.currentProject();
    project.msl[0].MIDIoutAttackVelocity = 127;
    std::string msg;
    ASSERT_EQ(saveProject(project, folder, what.name, msg), 1) << msg;

    InstrumentSpec choice;
    ASSERT_EQ(parseInstrumentSpec(std::string(kGeneralMidiFont) +
                                      "?preset=" + std::to_string(what.preset),
                                  choice, msg),
              1);
    OfflineTakeSource source(choice);
    RunObserver quiet;
    RunOptions options;
    options.command = kRecordSelectedProject;
    options.recordOnlyEmptyKeys = false;
    ASSERT_EQ(runOfflineRecording(model, options, source, quiet, msg), 1) << msg;
    BatchAutoOptions autoOptions;
    autoOptions.autoNote = true;
    autoOptions.autoLoop = true;
    ASSERT_EQ(batchAutoNoteLoop(
                  project, KeyScope::Project, 0, autoOptions,
                  [](const std::string&, double) { return true; }, msg),
              1)
        << msg;
    ExportRequest request;
    request.menuText = menuTextForShortKey("sf2");
    request.destination = folder + "/" + what.name + ".sf2";
    ASSERT_EQ(runExport(project, request, defaultExportServices(), msg), 1) << msg;
}

std::unique_ptr<HostedInstrument> openInstrument(const std::string& text)
{
    std::string msg;
    auto instrument = openInstrument(text, msg);
    EXPECT_NE(instrument, nullptr) << text << ": " << msg;
    return instrument;
}

std::vector<uint8_t> bounceTake(HostedInstrument& instrument, const BounceNote& note,
                                uint16_t channels)
{
    std::vector<uint8_t> take;
    std::string msg;
    EXPECT_EQ(bounceNote(instrument, note,
                         AudioStreamConfig{-1, -1, -1, 44100, 16, channels, -1.0f}, take, msg),
              1)
        << msg;
    return take;
}

} // namespace tg::test
