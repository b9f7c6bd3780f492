#include "tests/support/SavedProject.h"

#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "core/ProjectFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace tg::test {

std::string saveSineProject(const std::string& folder, const std::string& name,
                            const SavedProjectSpec& spec,
                            const std::function<void(Project&)>& change)
{
    auto project = std::make_unique<Project>();
    copyText(project->name, name.c_str());
    copyText(project->dataPath, (spec.dataPath.empty() ? folder : spec.dataPath).c_str());
    project->mslCount = int(spec.layers.size());
    for (int m = 0; m < project->mslCount; ++m) {
        TGmsl& msl = project->msl[m];
        copyText(msl.name, spec.layers[m].c_str());
        for (int note : spec.notes) {
            std::vector<uint8_t> data;
            for (int i = 0; i < spec.frames; ++i)
                for (int ch = 0; ch < spec.channels; ++ch) {
                    const int16_t v = int16_t((m + 1) * 5000 * std::sin(i * 0.03 + ch));
                    data.push_back(uint8_t(v & 0xFF));
                    data.push_back(uint8_t((v >> 8) & 0xFF));
                }
            std::string message;
            EXPECT_TRUE(writeWav(keySampleFileName(*project, msl, note),
                                 makeWaveFormat(44100, spec.channels, 16), data, message))
                << message;
            TGmsl_key& key = msl.keys[note];
            key.keyState = 1;
            key.Note_In = spec.noteIn;
            key.Note_Out = spec.frames - 1;
            key.loopMode = 1;
            key.Loop_In = spec.loopIn;
            key.Loop_Out = spec.loopOut;
        }
    }
    if (change)
        change(*project);
    std::string message;
    EXPECT_TRUE(saveProject(*project, folder, name, message)) << message;
    return folder + "/" + name + ".TGprj";
}

} // namespace tg::test
