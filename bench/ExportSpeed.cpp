// Measures the SoundFont 2 and WAV-files exports of a 61-key x 3-layer Project of 4 s stereo
// 16-bit Key-Samples against a plain copy of the same files on the same disk.
//
// Usage: tg_export_speed [WORK_FOLDER]   (default: ./tg_export_speed.tmp, removed afterwards)
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "export/ExportAudioServices.h"
#include "export/ExportSoundFont2.h"
#include "export/ExportWavFiles.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>

using namespace tg;
namespace fs = std::filesystem;

namespace {

constexpr int kLayers = 3;
constexpr int kLowKey = 36;
constexpr int kKeys = 61;
constexpr int kRate = 44100;
constexpr int kFrames = 4 * kRate;

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

uint64_t folderBytes(const fs::path& folder)
{
    uint64_t total = 0;
    for (const auto& entry : fs::directory_iterator(folder))
        total += entry.file_size();
    return total;
}

bool makeProject(Project& project, const fs::path& data)
{
    copyText(project.name, "Bench");
    copyText(project.dataPath, data.string().c_str());
    project.mslCount = kLayers;
    std::vector<uint8_t> audio(size_t(kFrames) * 4);
    for (int layer = 0; layer < kLayers; ++layer) {
        TGmsl& msl = project.msl[layer];
        copyText(msl.name, formatText("Layer%d", layer).c_str());
        msl.range_start = layer * 43;
        msl.range_end = layer == kLayers - 1 ? 127 : layer * 43 + 42;
        msl.KBrangeIn = kLowKey;
        msl.KBrangeOut = kLowKey + kKeys - 1;
        for (int note = kLowKey; note < kLowKey + kKeys; ++note) {
            const double step = 2 * M_PI * 440.0 * std::pow(2.0, (note - 69) / 12.0) / kRate;
            for (int i = 0; i < kFrames; ++i) {
                const int16_t v = int16_t(9000 * std::sin(step * i) * (1.0 + 0.3 * layer));
                for (int c = 0; c < 2; ++c) {
                    audio[size_t(i) * 4 + c * 2] = uint8_t(v & 0xFF);
                    audio[size_t(i) * 4 + c * 2 + 1] = uint8_t((v >> 8) & 0xFF);
                }
            }
            TGmsl_key& key = msl.keys[note];
            key = makeNewKey(note);
            key.keyState = 1;
            key.hasAudio = 1;
            key.Note_In = 1000;
            key.Note_Out = kFrames - 1;
            key.loopMode = 1;
            key.Loop_In = kRate;
            key.Loop_Out = 3 * kRate;
            key.xfadeLen = 4410;
            std::string message;
            if (!writeWav(keySampleFileName(project, msl, note), makeWaveFormat(kRate, 2, 16),
                          audio, message)) {
                std::fprintf(stderr, "%s\n", message.c_str());
                return false;
            }
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const fs::path work = argc > 1 ? fs::path(argv[1]) : fs::path("tg_export_speed.tmp");
    fs::remove_all(work);
    for (const char* sub : {"data", "sf2", "wav", "copy"})
        fs::create_directories(work / sub);
    auto project = std::make_unique<Project>();
    if (!makeProject(*project, work / "data"))
        return 1;
    const std::vector<int> layers = {0, 1, 2};
    const ExportServices services = defaultExportServices();
    // 44.1 kHz, 16 Bit, Stereo (as recorded: no conversion), tail kept, levels adjusted.
    const uint32_t settings = 0x20408 | 0x1000000 | 0x20000000 | 0x40000000;
    std::string message;

    auto start = std::chrono::steady_clock::now();
    for (const auto& entry : fs::directory_iterator(work / "data"))
        fs::copy_file(entry.path(), work / "copy" / entry.path().filename());
    const double copySeconds = secondsSince(start);

    start = std::chrono::steady_clock::now();
    if (!TGexport_SoundFont2((work / "sf2").string(), "Bench", "sf2", project.get(), layers,
                             settings, message, services)) {
        std::fprintf(stderr, "%s\n", message.c_str());
        return 1;
    }
    const double sf2Seconds = secondsSince(start);

    start = std::chrono::steady_clock::now();
    if (!TGexport_WavFiles((work / "wav").string(), "<#msi#>-<#mn#>", project.get(), layers,
                           settings, false, message, services)) {
        std::fprintf(stderr, "%s\n", message.c_str());
        return 1;
    }
    const double wavSeconds = secondsSince(start);

    const double mb = 1.0 / (1024.0 * 1024.0);
    std::printf("Key-Samples: %d x %d keys, 4 s stereo 16-bit at 44.1 kHz\n", kLayers, kKeys);
    std::printf("plain copy : %8.3f s  %8.1f MiB\n", copySeconds, folderBytes(work / "copy") * mb);
    std::printf("SoundFont 2: %8.3f s  %8.1f MiB  ratio to copy %.2f\n", sf2Seconds,
                folderBytes(work / "sf2") * mb, sf2Seconds / copySeconds);
    std::printf("WAV files  : %8.3f s  %8.1f MiB  ratio to copy %.2f\n", wavSeconds,
                folderBytes(work / "wav") * mb, wavSeconds / copySeconds);
    fs::remove_all(work);
    return 0;
}
