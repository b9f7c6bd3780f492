// Copying Multi-Samples and their Key-Sample files between Projects.
#include "extras/InstrumentCopier.h"

#include "core/AtomicFile.h"
#include "core/FolderSyncBatch.h"
#include "core/Names.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace fs = std::filesystem;

namespace tg {

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// The name a copy of `name` gets among the Multi-Samples of `to`.
Result copyName(const Project& to, const std::string& name, std::string& result)
{
    std::vector<std::string> siblings;
    for (int i = 0; i < to.mslCount; ++i)
        siblings.emplace_back(to.msl[i].name);
    if (std::find(siblings.begin(), siblings.end(), name) == siblings.end()) {
        result = name;
        return Result::done();
    }
    if (!nextCopyName(name, siblings, result))
        return Result::refused("Cannot duplicate this multisample. There are too many "
                               "multisamples with the same base name!");
    return Result::done();
}

} // namespace

int copyFileWhole(const std::string& source, const std::string& target, std::string& message)
{
    File in(std::fopen(source.c_str(), "rb"), &std::fclose);
    if (!in)
        return setMessage(message, "unable to open %s", source.c_str());
    AtomicFile out(target);
    if (!out.open())
        return setMessage(message, "unable to open %s", target.c_str());
    char buffer[1 << 16];
    size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, in.get())) > 0)
        if (!out.write(buffer, got))
            return setMessage(message, "error writing %s", target.c_str());
    if (std::ferror(in.get()))
        return setMessage(message, "read error: %s", source.c_str());
    if (!out.commit())
        return setMessage(message, "error writing %s", target.c_str());
    return 1;
}

int copyInstruments(const Project& from, const std::vector<int>& indices, Project& to,
                    const CopyOverwriteQuestion& askOverwrite, CopyOutcome& outcome,
                    std::string& message)
{
    outcome = CopyOutcome();
    std::vector<int> chosen = indices;
    if (chosen.empty())
        for (int i = 0; i < from.mslCount; ++i)
            chosen.push_back(i);
    for (int index : chosen)
        if (index < 0 || index >= from.mslCount)
            return setMessage(message, "The Project \"%s\" has no Multi-Sample %d.", from.name,
                              index);
    if (to.mslCount + int(chosen.size()) > kMaxMultiSamples)
        return setMessage(message, "You cannot have more than %ld Multi-Samples.",
                          static_cast<long>(kMaxMultiSamples));
    std::error_code error;
    if (!fs::is_directory(to.dataPath, error))
        return setMessage(message, "Couldn't find the datapath \"%s\"\nof the project \"%s\"",
                          to.dataPath, to.name);

    // Each copied file is synced as it is written; the data folder once, after the last.
    FolderSyncBatch folderSyncs;
    for (int index : chosen) {
        const TGmsl& source = from.msl[index];
        std::string name;
        const Result named = copyName(to, source.name, name);
        if (!named.ok()) {
            message = named.message;
            return 0;
        }
        if (multiSampleKeySamplesExist(to, name) && askOverwrite && !askOverwrite(name)) {
            ++outcome.leftOut;
            continue;
        }
        // The files first: the Multi-Sample joins `to` only once all of its audio is there.
        TGmsl copy = source;
        copyText(copy.name, name.c_str());
        for (int note = 0; note < kKeyCount; ++note) {
            TGmsl_key& key = copy.keys[note];
            const std::string file = keySampleFileName(from, source, note);
            if (!fs::is_regular_file(file, error)) {
                key.hasAudio = 0;
                continue;
            }
            if (!copyFileWhole(file, keySampleFileName(to, copy, note), message))
                return 0;
            key.hasAudio = 1;
            ++outcome.files;
        }
        to.msl[to.mslCount++] = copy;
        to.modified = 1;
        outcome.names.push_back(name);
    }
    return 1;
}

} // namespace tg
