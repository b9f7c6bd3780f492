// The Key-Sample the editor has open: which key of which Multi-Sample it is, and its audio
// with the overview the views draw from.
#pragma once

#include "shell/editor/WaveOverview.h"

#include <QString>

#include <string>

namespace tg {
class Model;
struct TGmsl_key;

struct TGsample {
    int project = -1;
    int msl = -1;
    int note = -1;
    shell::WaveOverview wave;
    QString problem;          // why there is no audio to show, for the view to say
    bool keyHadAudio = false; // the key's hasAudio after the load: a new take turns it on
    // Which file the audio came from, as the file system identifies it: a take saved over it
    // (a new file renamed into place) or a job that rewrote it has another identity.
    std::string fileIdentity;

    bool sameKey(int p, int m, int n) const { return project == p && msl == m && note == n; }
};

} // namespace tg

namespace tg::shell {

// Loads the current key of the current Multi-Sample into `sample` (or empties it, with the
// reason in `problem`).
void loadCurrentKeySample(Model& model, TGsample& sample);

// The key record `sample` was loaded from, while the model still has it; nullptr otherwise.
TGmsl_key* keyOf(Model& model, const TGsample& sample);

// The file behind `sample`'s key is no longer the one its audio was loaded from.
bool takeReplacedOnDisk(Model& model, const TGsample& sample);

} // namespace tg::shell
