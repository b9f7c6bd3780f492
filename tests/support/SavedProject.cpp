#include "tests/support/SavedProject.h"

#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "tests/support/Pcm16.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace tg::test {

std::string saveSineProject(const std::string& folder, const std::string& name,
                            const SineProjectShape& shape,
                            const std::function<void(Project&)>& change)
{
    auto project = std::make_unique<Project>();
    copyText(project->name, name.c_str());
    copyText(project->dataPath, (shape.dataPath.empty() ? folder : shape.dataPath).c_str());
    project->mslCount = int(shape.layers.size());
    for (int m = 0; m < project->mslCount; ++m) {
        TGmsl& msl = project->msl[m];
        copyText(msl.name, shape.layers[m].c_str());
        for (int note : shape.notes) {
            const bool stereo = std::find(shape.stereoNotes.begin(), shape.stereoNotes.end(),
                                          note) != shape.stereoNotes.end();
            const uint16_t channels = stereo ? 2 : shape.channels;
            const std::vector<uint8_t> data =
                pcm16(size_t(shape.frames), channels, [m](size_t i, int ch) {
                    return int16_t((m + 1) * 5000 * std::sin(double(i) * 0.03 + ch));
                });
            std::string message;
            EXPECT_TRUE(writeWav(keySampleFileName(*project, msl, note),
                                 makeWaveFormat(44100, channels, 16), data, message))
                << message;
            TGmsl_key& key = msl.keys[note];
            key.keyState = 1;
            key.Note_In = shape.noteIn;
            key.Note_Out = shape.frames - 1;
            key.loopMode = 1;
            key.Loop_In = shape.loopIn;
            key.Loop_Out = shape.loopOut;
        }
    }
    if (change)
        change(*project);
    std::string message;
    EXPECT_TRUE(saveProject(*project, folder, name, message)) << message;
    return folder + "/" + name + ".TGprj";
}

} // namespace tg::test
