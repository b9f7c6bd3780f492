// Playing one key's Key-Sample: load, render, hand the parts to the player.
#include "devices/KeySamplePlayback.h"

#include "analysis/Renderer.h"
#include "audiofile/KeySampleAudio.h"
#include "core/Model.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"

#include <algorithm>

namespace tg {

int prepareKeySampleSound(const Project& project, TGmsl& msl, int note, int32_t fadeIn,
                          int32_t fadeOut, KeySampleSound& out, std::string& msg)
{
    out = KeySampleSound{};
    WaveFormat format;
    std::vector<uint8_t> recording;
    const Result loaded = loadKeySampleAudio(project, msl, note, format, recording);
    if (!loaded.ok()) {
        msg = loaded.message;
        return 0;
    }
    const TGmsl_key& key = msl.keys[size_t(note)];
    RenderOptions options;
    options.clickPopFadeIn = fadeIn;
    options.clickPopFadeOut = fadeOut;
    RenderedNote rendered;
    const size_t bytes = recording.size();
    if (!renderKeySample(&key, &format, recording.data(), &bytes, options, &rendered, msg))
        return 0;
    out.format = rendered.format;
    const size_t align = rendered.format.nBlockAlign;
    out.note = std::move(rendered.note);
    out.note.resize(size_t(rendered.frames) * align); // without the even-count pad byte
    // An unlooped render also reports a loop (the whole note), so the key's own markers
    // tell whether the renderer made one.
    const bool looped = (key.loopMode == 1 || key.loopMode == 2) && key.Loop_In >= key.Note_In &&
                        key.Loop_Out > key.Loop_In && key.Loop_Out <= key.Note_Out;
    if (looped) {
        out.loopStart = rendered.loopStart;
        out.loopEnd = rendered.loopEnd + 1;
    }

    // The release follows the note's last frame in the recording; where the two markers
    // overlap, the release starts after Note_Out so that no frame sounds twice.
    const int64_t frames = int64_t(recording.size() / align);
    const int64_t releaseIn = std::max<int64_t>(key.Release_In, int64_t(key.Note_Out) + 1);
    const int64_t releaseOut = std::min<int64_t>(key.Release_Out, frames - 1);
    if (key.releaseOn && releaseOut >= releaseIn) {
        const auto first = recording.begin() + releaseIn * int64_t(align);
        out.release.assign(first, first + (releaseOut + 1 - releaseIn) * int64_t(align));
    }
    return 1;
}

int KeyPlayer::play(int note, std::string& msg)
{
    Project* project = model_.currentProject();
    TGmsl* msl = model_.currentMultiSample();
    if (project == nullptr || msl == nullptr || note < 0 || note >= kKeyCount ||
        !msl->keys[size_t(note)].hasAudio)
        return 1;
    lastNote_ = note;
    const int32_t output = audio::outputDeviceIndex(audio_.outputDeviceName(), msg);
    if (output < 0 || !audio::outputOpen()) {
        msg.clear();
        return 1; // no output to play on
    }
    const Preferences& prefs = model_.preferences();
    KeySampleSound sound;
    if (!prepareKeySampleSound(*project, *msl, note, prefs.ClickPopRedFade_in,
                               prefs.ClickPopRedFade_out, sound, msg))
        return 0;
    // A hosted instrument's Multi-Sample has the output play its ring buffer; a key played by
    // hand takes the output back (a recording run sets plug-in mode again when it opens).
    audio::player().setPluginMode(false);
    return TGaudio_playSample(
        output, sound.format, sound.note.data(), sound.note.size(), sound.loopStart, sound.loopEnd,
        sound.release.empty() ? nullptr : sound.release.data(), sound.release.size(), msg, 0);
}

void KeyPlayer::release()
{
    audio::player().releaseKey();
}

} // namespace tg
