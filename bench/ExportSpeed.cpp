// Measures the SoundFont 2, WAV-files, SFZ and Bitwig exports of a 61-key x 3-layer Project of
// 4 s stereo 16-bit Key-Samples against copying the same files on the same disk, with the
// recordings in the page cache (warm) and dropped from it first (cold).
//
// Every file an export writes is synced to disk before it replaces its destination, so the
// fair yardstick is a copy that syncs each file too ("synced copy"); the plain copy beside it
// shows what the syncing costs per file.
//
// Usage: tg_export_speed [WORK_FOLDER [RUNS [SUBJECT]]]
//   (default ./tg_export_speed.tmp, best of 3 runs, every subject; the copies always run)
// Run it where the templates are found (the repository root or beside the program).
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "export/ExportAudioServices.h"
#include "export/ExportRunner.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include <ctime>

#include <fcntl.h>
#include <unistd.h>

using namespace tg;
namespace fs = std::filesystem;

namespace {

constexpr int kLayers = 3;
constexpr int kLowKey = 36;
constexpr int kKeys = 61;
constexpr int kRate = 44100;
constexpr int kFrames = 4 * kRate;

uint64_t treeBytes(const fs::path& folder)
{
    uint64_t total = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
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

// Syncs every file of `folder` and, when `drop`, asks the kernel to forget its cached pages,
// so the next read comes from the disk.
void settleFiles(const fs::path& folder, bool drop)
{
    for (const auto& entry : fs::directory_iterator(folder)) {
        const int fd = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            continue;
        fdatasync(fd);
        if (drop)
            posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
        ::close(fd);
    }
}

bool copyFiles(const fs::path& from, const fs::path& to, bool sync)
{
    for (const auto& entry : fs::directory_iterator(from)) {
        const fs::path target = to / entry.path().filename();
        fs::copy_file(entry.path(), target);
        if (sync) {
            const int fd = ::open(target.c_str(), O_RDONLY | O_CLOEXEC);
            const bool synced = fd >= 0 && fsync(fd) == 0;
            if (fd >= 0)
                ::close(fd);
            if (!synced)
                return false;
        }
    }
    return true;
}

struct Subject {
    const char* name;
    std::function<bool(const fs::path& out)> run;
};

struct Figure {
    double warm = 0.0;
    double cold = 0.0;
    double cpu = 0.0; // processor seconds of the best warm run, every thread counted
    uint64_t bytes = 0;
};

double processorSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

// One timed run of `subject` into a fresh folder, after the recordings were settled; keeps the
// best time in `figure`.
void timeOneRun(const Subject& subject, const fs::path& work, bool cold, Figure& figure)
{
    const fs::path out = work / "out";
    fs::remove_all(out);
    fs::create_directories(out);
    settleFiles(work / "data", cold);
    const auto start = std::chrono::steady_clock::now();
    const double startCpu = processorSeconds();
    if (!subject.run(out)) {
        std::fprintf(stderr, "%s failed\n", subject.name);
        std::exit(1);
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    double& best = cold ? figure.cold : figure.warm;
    if (!cold && seconds < best)
        figure.cpu = processorSeconds() - startCpu;
    best = std::min(best, seconds);
    figure.bytes = treeBytes(out);
}

// Best of `runs` runs of every subject. The subjects take turns run by run rather than one
// after the other: on ext4 without a journal every new file is slower to create the more
// files were deleted in the last minutes (the allocator steps over their inodes), so a
// subject measured after all the others' deleted outputs would pay for them.
std::vector<Figure> measure(const std::vector<const Subject*>& subjects, const fs::path& work,
                            int runs)
{
    std::vector<Figure> figures(subjects.size(), Figure{1e30, 1e30, 0.0, 0});
    for (int cold = 0; cold < 2; ++cold)
        for (int run = 0; run < runs; ++run)
            for (size_t i = 0; i < subjects.size(); ++i)
                timeOneRun(*subjects[i], work, cold != 0, figures[i]);
    fs::remove_all(work / "out");
    return figures;
}

} // namespace

int main(int argc, char** argv)
{
    const fs::path work = argc > 1 ? fs::path(argv[1]) : fs::path("tg_export_speed.tmp");
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;
    const std::string only = argc > 3 ? argv[3] : "";
    fs::remove_all(work);
    fs::create_directories(work / "data");
    auto project = std::make_unique<Project>();
    if (!makeProject(*project, work / "data"))
        return 1;
    const ExportServices services = defaultExportServices();
    std::string message;
    auto exportAs = [&](const char* menuText, const fs::path& destination) {
        ExportRequest request;
        request.menuText = menuText;
        request.destination = destination.string();
        request.nameTemplate = "<#msi#>-<#mn#>";
        request.mslIndices = {0, 1, 2};
        request.hasSettings = true;
        // 44.1 kHz, 16 Bit, Stereo (as recorded: no conversion), tail kept, levels adjusted.
        request.settings = 0x20408 | 0x1000000 | 0x20000000 | 0x40000000;
        if (runExport(*project, request, services, message))
            return true;
        std::fprintf(stderr, "%s\n", message.c_str());
        return false;
    };

    const std::vector<Subject> subjects = {
        {"plain copy", [&](const fs::path& out) { return copyFiles(work / "data", out, false); }},
        {"synced copy", [&](const fs::path& out) { return copyFiles(work / "data", out, true); }},
        {"SoundFont 2",
         [&](const fs::path& out) { return exportAs("SoundFont2 (*.sf2)", out / "Bench.sf2"); }},
        {"WAV files", [&](const fs::path& out) { return exportAs("WAV-Files", out); }},
        {"SFZ",
         [&](const fs::path& out) {
             return exportAs("Cakewalk Dimension (*.sfz)", out / "Bench.sfz");
         }},
        {"Bitwig",
         [&](const fs::path& out) {
             return exportAs("Bitwig Studio (*.multisample)", out / "Bench.multisample");
         }},
    };

    std::printf("Key-Samples: %d x %d keys, 4 s stereo 16-bit at 44.1 kHz; best of %d runs; "
                "%d render threads\n",
                kLayers, kKeys, runs, services.renderThreads);
    // On a busy machine the wall times follow the load; the processor time says what the work
    // itself costs.
    std::printf("%-12s %9s %9s %9s %9s %12s %12s\n", "", "warm s", "cold s", "cpu s", "MiB",
                "warm/synced", "cold/synced");
    std::vector<const Subject*> chosen;
    for (const Subject& subject : subjects)
        if (only.empty() || chosen.size() < 2 || only == subject.name)
            chosen.push_back(&subject);
    const std::vector<Figure> figures = measure(chosen, work, runs);
    for (size_t i = 0; i < chosen.size(); ++i) {
        const Figure& f = figures[i];
        std::printf("%-12s %9.3f %9.3f %9.3f %9.1f", chosen[i]->name, f.warm, f.cold, f.cpu,
                    double(f.bytes) / (1024.0 * 1024.0));
        if (i > 0)
            std::printf(" %12.2f %12.2f", f.warm / figures[1].warm, f.cold / figures[1].cold);
        std::printf("\n");
    }
    const double files = double(kLayers * kKeys);
    std::printf("syncing costs %.2f ms per file (synced minus plain copy, warm)\n",
                (figures[1].warm - figures[0].warm) / files * 1000.0);
    fs::remove_all(work);
    return 0;
}
