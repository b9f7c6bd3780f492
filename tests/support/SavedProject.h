// A small saved Project of recorded, looped 16-bit sine Key-Samples, for tests that run
// commands or menus on a real project file.
#pragma once

#include "core/Records.h"

#include <functional>
#include <string>
#include <vector>

namespace tg::test {

struct SineProjectShape {
    std::vector<std::string> layers = {"Soft", "Hard"}; // Multi-Sample names
    std::vector<int> notes = {60, 67};                  // recorded in every layer
    int frames = 8000;
    uint16_t channels = 1;
    std::vector<int> stereoNotes;      // recorded in two channels whatever `channels` says
    int noteIn = 100;                  // the note ends on the last frame
    int loopIn = 2000, loopOut = 5999; // every key is looped
    std::string dataPath;              // where the Key-Samples go; empty: the project's folder
};

// Writes the Key-Samples, applies `change` to the record and saves it as
// `folder`/`name`.TGprj; returns that path. Layer m sounds at
// (m + 1) x 5000, so that layers can be told apart by level.
std::string saveSineProject(const std::string& folder, const std::string& name,
                            const SineProjectShape& shape = {},
                            const std::function<void(Project&)>& change = {});

} // namespace tg::test
