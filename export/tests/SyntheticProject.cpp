// Synthetic Projects, audio and WAV images for the format writer tests.
#include "export/tests/SyntheticProject.h"

#include "core/Message.h"
#include "tests/support/TempDir.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <sys/wait.h>

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

RenderedSample syntheticSample(int mslIndex, int note, int frames, uint16_t channels,
                               uint16_t bits, bool loop)
{
    RenderedSample sample;
    sample.format = makeWaveFormat(48000, channels, bits);
    sample.rootKey = note;
    for (int frame = 0; frame < frames; ++frame) {
        for (int channel = 0; channel < channels; ++channel) {
            // Distinct per layer, note, channel and frame; spans the sign.
            const int value = ((frame * 37 + note * 1013 + mslIndex * 7919) % 60000) - 30000 +
                              (channel ? 11 : 0);
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

namespace {
void put16(std::string& out, uint32_t v)
{
    out.push_back(static_cast<char>(v & 0xFF));
    out.push_back(static_cast<char>((v >> 8) & 0xFF));
}
void put32(std::string& out, uint32_t v)
{
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}
} // namespace

std::string riffImage(const RenderedSample& sample)
{
    std::string body = "WAVEfmt ";
    put32(body, 16);
    put16(body, 1);
    put16(body, sample.format.nChannels);
    put32(body, sample.format.nSamplesPerSec);
    put32(body, sample.format.nAvgBytesPerSec);
    put16(body, sample.format.nBlockAlign);
    put16(body, sample.format.wBitsPerSample);
    body += "data";
    put32(body, static_cast<uint32_t>(sample.audio.size()));
    body.append(sample.audio.begin(), sample.audio.end());
    if (sample.audio.size() % 2)
        body.push_back('\0');
    if (sample.hasLoop) {
        body += "smpl";
        put32(body, 60);
        for (uint32_t v : {0u, 0u, 1000000000u / sample.format.nSamplesPerSec,
                           static_cast<uint32_t>(sample.rootKey), 0u, 0u, 0u, 1u, 0u})
            put32(body, v);
        for (uint32_t v : {0u, 0u, static_cast<uint32_t>(sample.loopStart),
                           static_cast<uint32_t>(sample.loopEnd), 0u, 0u})
            put32(body, v);
    }
    std::string out = "RIFF";
    put32(out, static_cast<uint32_t>(body.size()));
    return out + body;
}

WavFileWriter riffWriter()
{
    return [](const std::string& path, const RenderedSample& sample, std::string& message) {
        if (!writeFileBytes(path, riffImage(sample)))
            return setMessage(message, "cannot write \"%s\"", path.c_str());
        return 1;
    };
}

int runCommand(const std::string& command, std::string* output)
{
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe)
        return -1;
    std::array<char, 4096> buffer{};
    size_t got = 0;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        if (output)
            output->append(buffer.data(), got);
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool haveProgram(const char* program)
{
    return runCommand(std::string("command -v ") + program + " >/dev/null") == 0;
}

} // namespace tg::test
