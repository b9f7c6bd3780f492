// A Key-Sample as users make them, for the playback tests: the General MIDI church organ
// sampled offline through the CLI, auto-noted and auto-looped, its release switched on; and
// the check that a capture of it being held sounds as it should.
#pragma once

#include "analysis/Renderer.h"
#include "core/Records.h"

#include <functional>
#include <string>
#include <vector>

namespace tg::test {

struct SampledKey {
    static constexpr int kNote = 84;
    std::string project; // PATH.TGprj
    TGmsl_key key;
    WaveFormat format;
    std::vector<uint8_t> recording;
    RenderedNote rendered; // with the preferences' default click/pop fades
};

// Makes the Project in `folder` (data beside it); false with `failure` said.
bool makeSampledKey(const std::string& folder, const std::string& home, SampledKey& out,
                    std::string& failure);

// Writes `device` as the preferences' audio output into the user data folder `home`.
void chooseAudioOutput(const std::string& home, const std::string& device);

// How the key ends.
enum class LetGo {
    Release, // the loop plays to its end, the release follows, then silence
    FadeOut  // a fade within one output block, then silence
};

class JackCapture;

// Plays the key with `play` while `capture` records, and checks both channels of what it
// heard: nothing before the note, the note once, the loop sample for sample for about
// `holdSeconds`, no wrap that clicks, and the ending `letGo` says. A go that does not sound
// right is played again (the chain loses periods on a loaded machine), up to three goes;
// the last one's faults are gtest failures.
void expectKeyHeardRight(JackCapture& capture, const SampledKey& sampled, double holdSeconds,
                         LetGo letGo, const std::function<void()>& play);

} // namespace tg::test
