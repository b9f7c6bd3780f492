// Synthetic Projects and audio for the format writer tests.
#include "export/tests/SyntheticProject.h"

#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "tests/support/TempDir.h"

namespace tg::test {

std::unique_ptr<Project> makeProject(const char* name)
{
    auto project = std::make_unique<Project>();
    copyText(project->name, name);
    return project;
}

int addLayer(Project& project, const char* name, int velocityLow, int velocityHigh, int keyLow,
             int keyHigh)
{
    const int index = project.mslCount++;
    TGmsl& msl = project.msl[index];
    copyText(msl.name, name);
    msl.range_start = velocityLow;
    msl.range_end = velocityHigh;
    msl.KBrangeIn = static_cast<uint16_t>(keyLow);
    msl.KBrangeOut = static_cast<uint16_t>(keyHigh);
    return index;
}

void addKey(Project& project, int mslIndex, int note, int mapLow, int mapHigh, uint8_t loopMode)
{
    TGmsl_key& key = project.msl[mslIndex].keys[note];
    key.keyState = 1;
    key.hasAudio = 1;
    key.mapLow = static_cast<uint8_t>(mapLow);
    key.mapHigh = static_cast<uint8_t>(mapHigh);
    key.loopMode = loopMode;
    copyText(key.name, "Key");
}

RenderedSample syntheticSample(int mslIndex, int note, int frames, uint16_t channels, uint16_t bits,
                               bool loop)
{
    RenderedSample sample;
    sample.format = makeWaveFormat(48000, channels, bits);
    sample.rootKey = note;
    for (int frame = 0; frame < frames; ++frame) {
        for (int channel = 0; channel < channels; ++channel) {
            // Distinct per layer, note, channel and frame; spans the sign.
            const int value =
                ((frame * 37 + note * 1013 + mslIndex * 7919) % 60000) - 30000 + (channel ? 11 : 0);
            if (bits == 8) {
                sample.audio.push_back(static_cast<uint8_t>((value >> 8) + 128));
            } else if (bits == 16) {
                sample.audio.push_back(static_cast<uint8_t>(value & 0xFF));
                sample.audio.push_back(static_cast<uint8_t>((value >> 8) & 0xFF));
            } else {
                const int wide = value * 256 + 0x55;
                sample.audio.push_back(static_cast<uint8_t>(wide & 0xFF));
                sample.audio.push_back(static_cast<uint8_t>((wide >> 8) & 0xFF));
                sample.audio.push_back(static_cast<uint8_t>((wide >> 16) & 0xFF));
            }
        }
    }
    if (loop) {
        sample.hasLoop = true;
        sample.loopStart = frames / 4;
        sample.loopEnd = frames - 10;
    }
    return sample;
}

int SyntheticSource::render(int mslIndex, int ordinal, int note, RenderedSample& sample,
                            std::string& message)
{
    if (failAfterFirst && !requests.empty()) {
        message = "Export aborted.";
        return 0;
    }
    requests.emplace_back(mslIndex, ordinal, note);
    const auto looped = loopedNotes.find(note);
    sample = syntheticSample(mslIndex, note, frames, channels, bits,
                             looped != loopedNotes.end() && looped->second);
    return 1;
}

WavFileWriter wavFileWriter()
{
    return [](const std::string& path, const RenderedSample& sample, std::string& message) {
        WavLoopInfo loop;
        loop.loopStart = sample.loopStart;
        loop.loopEnd = sample.loopEnd;
        loop.rootKey = sample.rootKey;
        return writeWav(path, sample.format, sample.audio, message,
                        sample.hasLoop ? &loop : nullptr);
    };
}

} // namespace tg::test
