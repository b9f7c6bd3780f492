// A saved project file of named, empty Multi-Samples written by the real writer, for tests of
// the list operations and of opening projects.
#pragma once

#include "core/Model.h"
#include "core/ProjectFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tg::test {

// Writes "<folder>/<name>.TGprj" (its data path the same folder) with the given Multi-Sample
// names and returns its path. Keys 60..64 of each Multi-Sample are selected; the last one is
// the current Multi-Sample.
inline std::string writeProjectFile(const std::string& folder, const std::string& name,
                                    const std::vector<std::string>& multiSamples)
{
    Model model;
    model.newProject();
    for (const std::string& mslName : multiSamples) {
        model.addMultiSample();
        TGmsl& msl = *model.currentMultiSample();
        copyText(msl.name, mslName.c_str());
        for (int note = 60; note <= 64; ++note)
            msl.keys[note].keyState = 1;
    }
    copyText(model.currentProject()->dataPath, folder.c_str());
    std::filesystem::create_directories(folder);
    std::string message;
    EXPECT_TRUE(saveProject(*model.currentProject(), folder, name, message)) << message;
    return folder + "/" + name + ".TGprj";
}

} // namespace tg::test
