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
            std::vector<uint8_t> data;
            for (int i = 0; i < shape.frames; ++i)
                for (int ch = 0; ch < shape.channels; ++ch) {
                    const int16_t v = int16_t((m + 1) * 5000 * std::sin(i * 0.03 + ch));
                    data.push_back(uint8_t(v & 0xFF));
                    data.push_back(uint8_t((v >> 8) & 0xFF));
                }
            std::string message;
            EXPECT_TRUE(writeWav(keySampleFileName(*project, msl, note),
                                 makeWaveFormat(44100, shape.channels, 16), data, message))
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
