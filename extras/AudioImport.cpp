// Audio import: planning where files go, then converting and writing them as Key-Samples.
#include "extras/AudioImport.h"

#include "analysis/AutoNote.h"
#include "analysis/KeySampleFile.h"
#include "audiofile/SampleConverter.h"
#include "core/FolderSyncBatch.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/NoteNames.h"
#include "audiofile/RecordFormats.h"
#include "extras/FileNameKeys.h"
#include "extras/SampleFile.h"
#include "recording/ProjectSetup.h"

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace tg {

namespace {

std::string baseNameOf(const std::string& path)
{
    return fs::path(path).stem().string();
}

bool wanted(const fs::path& file, ImportFileTypes types)
{
    const std::string name = file.string();
    return (types != ImportFileTypes::Aiff && isWavFileName(name)) ||
           (types != ImportFileTypes::Wav && isAiffFileName(name));
}

int chosenIndex(const Project& project, int requested)
{
    return requested >= 0 ? requested : std::clamp<int32_t>(project.currentMsl, 0, 127);
}

bool holdsKeySample(const Project& project, int multiSample, int note)
{
    return multiSample >= 0 && multiSample < project.mslCount && note >= 0 && note < kKeyCount &&
           project.msl[multiSample].keys[note].hasAudio != 0;
}

// A name for a Multi-Sample the import adds: `wanted` itself, or the first name by the
// suffix rule that no sibling bears and no Key-Sample file in the data folder uses, so that
// the new Multi-Sample never takes over stray files.
Result freshMultiSampleName(const Project& project, const std::string& wanted, std::string& name)
{
    std::vector<std::string> taken;
    for (int i = 0; i < project.mslCount; ++i)
        taken.emplace_back(project.msl[i].name);
    name = wanted;
    for (;;) {
        const bool free = std::find(taken.begin(), taken.end(), name) == taken.end();
        if (free && !multiSampleKeySamplesExist(project, name))
            return Result::done();
        taken.push_back(name);
        if (!nextCopyName(wanted, taken, name))
            return Result::refused("Cannot duplicate this multisample. There are too many "
                                   "multisamples with the same base name!");
    }
}

// Appends a copy of Multi-Sample `from` without its Key-Samples, as the layer `layer`.
Result addLayer(Project& project, int from)
{
    if (project.mslCount >= kMaxMultiSamples)
        return Result::refused(formatText("You cannot have more than %ld Multi-Samples.",
                                          static_cast<long>(kMaxMultiSamples)));
    std::string name;
    const Result named = freshMultiSampleName(project, project.msl[from].name, name);
    if (!named.ok())
        return named;
    TGmsl& layer = project.msl[project.mslCount];
    layer = project.msl[from];
    copyText(layer.name, name.c_str());
    for (int note = 0; note < kKeyCount; ++note)
        layer.keys[note] = makeNewKey(note);
    ++project.mslCount;
    return Result::done();
}

// The key record of an imported file: its whole audio is the note when it brings a loop (it
// was cut and looped already), otherwise auto-note finds the note after the first 50 ms,
// which serve as the noise reference. Zone and lock of the key stay as they were.
void setImportedKey(TGmsl& msl, int note, const SampleFileContents& audio, const std::string& name)
{
    const TGmsl_key old = msl.keys[note];
    TGmsl_key key = makeNewKey(note);
    key.locked = old.locked;
    key.mapLowFlag = old.mapLowFlag;
    key.mapLow = old.mapLow;
    key.mapHighFlag = old.mapHighFlag;
    key.mapHigh = old.mapHigh;
    key.keyState = 1;
    key.hasAudio = 1;
    copyText(key.name, name.c_str());
    const int32_t last = audio.frames() - 1;
    key.Release_In = last;
    key.Release_Out = last;
    key.zerocrossing = msl.recordsettings.zerocrossing;
    if (audio.hasLoop()) {
        key.Note_In = 0;
        key.Note_Out = last;
        key.loopMode = 1;
        key.Loop_In = audio.loopStart;
        key.Loop_Out = audio.loopEnd;
        key.LoopSearch_In = audio.loopStart;
        key.LoopSearch_Out = audio.loopEnd;
        key.xfadeLen = 0; // the file's loop is seamless as it stands
        key.bfxfadeLen = 0;
        key.clickpopred = 0; // its ends were shaped when it was made
    } else {
        key.clickpopred = msl.recordsettings.clickpopred;
        key.Silence_In = 0;
        key.Silence_Out = 0;
        autoNote(key, audio.format, audio.data.data(), audio.data.size(), msl.recordsettings);
    }
    msl.keys[note] = key;
}

// Reads, converts and writes one file as key `note` of `msl`.
int importFile(Project& project, TGmsl& msl, int note, const std::string& path,
               std::string& message)
{
    WaveFormat target;
    if (!formatFromName(msl.AudioInFormat, target))
        return setMessage(message, "The Multi-Sample \"%s\" has no known sample format (\"%s\").",
                          msl.name, msl.AudioInFormat);
    SampleFileContents audio;
    if (!readSampleFile(path, audio, message))
        return 0;
    const bool sameFormat = audio.format.nSamplesPerSec == target.nSamplesPerSec &&
                            audio.format.nChannels == target.nChannels &&
                            audio.format.wBitsPerSample == target.wBitsPerSample;
    if (!sameFormat) {
        int32_t* loopStart = audio.hasLoop() ? &audio.loopStart : nullptr;
        int32_t* loopEnd = audio.hasLoop() ? &audio.loopEnd : nullptr;
        std::string why;
        if (!convertSamples(audio.data, audio.format, target, loopStart, loopEnd, ChannelMode::Mix,
                            ResampleMode::HighQuality, &why))
            return setMessage(message, "%s: %s", path.c_str(), why.c_str());
        audio.format = target;
        if (audio.hasLoop() && audio.loopEnd <= audio.loopStart)
            audio.loopStart = audio.loopEnd = -1; // a loop shorter than a frame at the new rate
    }
    if (!writeWavReplacing(keySampleFileName(project, msl, note), audio.format, audio.data,
                           message))
        return 0;
    setImportedKey(msl, note, audio, baseNameOf(path));
    return 1;
}

std::string keyText(int note)
{
    return formatText("%s (%d)", noteName(note).c_str(), note);
}

} // namespace

int collectImportFiles(const std::vector<std::string>& paths, ImportFileTypes types,
                       std::vector<std::string>& files, std::string& message)
{
    files.clear();
    for (const std::string& path : paths) {
        std::error_code error;
        if (fs::is_directory(path, error)) {
            std::vector<std::string> found;
            for (const fs::directory_entry& entry : fs::directory_iterator(path, error))
                if (entry.is_regular_file(error) && wanted(entry.path(), types))
                    found.push_back(entry.path().string());
            std::sort(found.begin(), found.end(), [](const std::string& a, const std::string& b) {
                return naturalLess(fs::path(a).filename().string(),
                                   fs::path(b).filename().string());
            });
            files.insert(files.end(), found.begin(), found.end());
        } else if (fs::is_regular_file(path, error)) {
            files.push_back(path);
        } else {
            return setMessage(message, "\"%s\" could not be found.", path.c_str());
        }
    }
    if (files.empty())
        return setMessage(message, "There are no audio files to import.");
    return 1;
}

int planImport(const Project& project, const std::vector<std::string>& files,
               const ImportRequest& request, std::vector<ImportItem>& plan, std::string& message)
{
    plan.clear();
    if (project.mslCount <= 0)
        return setMessage(message, "The Project has no Multi-Sample to import into.");
    std::vector<int> tags;
    int nextChosen = request.firstChosenKey;
    for (const std::string& path : files) {
        ImportItem item;
        item.path = path;
        int32_t root = -1;
        if (!readSampleFileRootKey(path, root, message))
            return 0;
        const std::string name = baseNameOf(path);
        if (root >= 0) {
            item.note = root;
            item.source = KeySource::FileChunk;
        } else if ((item.note = keyFromFileName(name)) >= 0) {
            item.source = KeySource::FileName;
        } else if (nextChosen >= 0 && nextChosen < kKeyCount) {
            item.note = nextChosen++;
            item.source = KeySource::Chosen;
        }
        tags.push_back(request.layer > 0 ? request.layer : layerFromFileName(name));
        plan.push_back(item);
    }
    // Tags count from 1 unless a file says 0.
    const bool fromZero = request.layer <= 0 && std::count(tags.begin(), tags.end(), 0) > 0;
    for (size_t i = 0; i < plan.size(); ++i)
        plan[i].layer = tags[i] < 0 ? 1 : tags[i] + (fromZero ? 1 : 0);
    updateImportTargets(project, chosenIndex(project, request.multiSample), plan);
    return 1;
}

void updateImportTargets(const Project& project, int chosenMultiSample,
                         std::vector<ImportItem>& plan)
{
    for (ImportItem& item : plan) {
        item.multiSample = chosenMultiSample + std::max(1, item.layer) - 1;
        item.occupied = holdsKeySample(project, item.multiSample, item.note);
    }
}

int checkImportPlan(const Project& project, const std::vector<ImportItem>& plan,
                    std::string& message)
{
    (void)project;
    for (size_t i = 0; i < plan.size(); ++i) {
        const ImportItem& item = plan[i];
        if (item.note < 0 || item.note >= kKeyCount)
            return setMessage(message,
                              "No key was found for \"%s\": the file has no root key and its "
                              "name no note name or MIDI number. Choose a key for it.",
                              item.path.c_str());
        if (item.multiSample >= kMaxMultiSamples)
            return setMessage(message, "You cannot have more than %ld Multi-Samples.",
                              static_cast<long>(kMaxMultiSamples));
        for (size_t j = 0; j < i; ++j)
            if (plan[j].note == item.note && plan[j].multiSample == item.multiSample)
                return setMessage(message,
                                  "\"%s\" and \"%s\" would both become key %s of layer %d.",
                                  plan[j].path.c_str(), item.path.c_str(),
                                  keyText(item.note).c_str(), item.layer);
    }
    return 1;
}

int runImport(Model& model, const std::vector<ImportItem>& plan, const ImportRun& run,
              ImportOutcome& outcome, std::string& message)
{
    outcome = ImportOutcome();
    Project* project = model.currentProject();
    if (project == nullptr)
        return setMessage(message, "There is no Project to import into.");
    if (!checkImportPlan(*project, plan, message))
        return 0;
    if (plan.empty())
        return 1;
    std::error_code error;
    if (!fs::is_directory(project->dataPath, error))
        return setMessage(message, "Couldn't find the datapath \"%s\"\nof the project \"%s\"",
                          project->dataPath, project->name);
    int chosen = kMaxMultiSamples, highest = 0;
    for (const ImportItem& item : plan) {
        chosen = std::min(chosen, item.multiSample - (item.layer - 1));
        highest = std::max(highest, item.multiSample);
    }
    if (chosen < 0 || chosen >= project->mslCount)
        return setMessage(message, "The Project has no Multi-Sample to import into.");
    if (run.policy == ConflictPolicy::Refuse) {
        for (const ImportItem& item : plan)
            if (holdsKeySample(*project, item.multiSample, item.note)) {
                outcome.refusedOccupied = true;
                return setMessage(message,
                                  "Key %s of the Multi-Sample \"%s\" already holds a Key-Sample; "
                                  "choose whether to replace or to skip such keys.",
                                  keyText(item.note).c_str(), project->msl[item.multiSample].name);
            }
    }

    const int before = project->mslCount;
    while (project->mslCount <= highest) {
        const Result added = addLayer(*project, chosen);
        if (!added.ok()) {
            message = added.message;
            break;
        }
    }
    outcome.layersAdded = project->mslCount - before;
    if (outcome.layersAdded > 0) {
        const std::vector<VelocityRange> ranges = splitVelocities(project->mslCount - chosen);
        for (size_t i = 0; i < ranges.size(); ++i) {
            TGmsl& layer = project->msl[chosen + int(i)];
            layer.range_start = ranges[i].low;
            layer.range_end = ranges[i].high;
            layer.MIDIoutAttackVelocity = uint16_t(ranges[i].high);
        }
        project->modified = 1;
    }

    // Each imported file is synced as it is written; the data folder once, after the last.
    FolderSyncBatch folderSyncs;
    int ok = project->mslCount > highest;
    for (size_t i = 0; ok && i < plan.size(); ++i) {
        const ImportItem& item = plan[i];
        if (run.progress &&
            !run.progress(formatText("Importing \"%s\"", baseNameOf(item.path).c_str()),
                          double(i) / double(plan.size()))) {
            outcome.cancelled = true;
            break;
        }
        if (holdsKeySample(*project, item.multiSample, item.note)) {
            ConflictAnswer answer = ConflictAnswer::Replace;
            if (run.policy == ConflictPolicy::Skip)
                answer = ConflictAnswer::Skip;
            else if (run.policy == ConflictPolicy::Ask && run.ask)
                answer = run.ask(item);
            if (answer == ConflictAnswer::Cancel) {
                outcome.cancelled = true;
                break;
            }
            if (answer == ConflictAnswer::Skip) {
                ++outcome.skipped;
                continue;
            }
        }
        ok = importFile(*project, project->msl[item.multiSample], item.note, item.path, message);
        if (ok) {
            ++outcome.imported;
            project->modified = 1;
        }
    }
    if (run.progress && ok && !outcome.cancelled)
        run.progress("", 1.0);
    const int projectIndex = model.currentProjectIndex();
    model.notifyListeners([&](TonegrabberModelListener& listener) {
        if (outcome.layersAdded > 0)
            listener.multiSampleListChanged();
        listener.keysChanged(projectIndex, -1);
    });
    return ok;
}

int importSoundLibrary(Model& model, const std::string& folder, int firstKey, const ImportRun& run,
                       ImportOutcome& outcome, std::string& message)
{
    outcome = ImportOutcome();
    Project* project = model.currentProject();
    if (project == nullptr)
        return setMessage(message, "There is no Project to import into.");
    std::error_code error;
    if (!fs::is_directory(folder, error))
        return setMessage(message, "\"%s\" is no folder.", folder.c_str());
    std::vector<std::string> files;
    if (!collectImportFiles({folder}, ImportFileTypes::Audio, files, message))
        return 0;
    if (firstKey < 0 || firstKey >= kKeyCount || firstKey + int(files.size()) > kKeyCount)
        return setMessage(message,
                          "The folder holds %d samples, but only %d keys lie from %s to G9.",
                          int(files.size()), std::max(0, kKeyCount - firstKey),
                          noteName(std::clamp(firstKey, 0, kKeyCount - 1)).c_str());
    for (const std::string& file : files) {
        int32_t root = -1;
        if (!readSampleFileRootKey(file, root, message))
            return 0;
    }
    fs::path folderPath = fs::absolute(folder).lexically_normal();
    if (!folderPath.has_filename())
        folderPath = folderPath.parent_path();
    std::string folderName =
        withoutForbiddenNameChars(folderPath.filename().string()).substr(0, kNameSize - 1);
    if (folderName.empty())
        folderName = "Sound Library";
    std::string name;
    Result named = freshMultiSampleName(*project, folderName, name);
    if (named.ok())
        named = model.addMultiSample();
    if (!named.ok()) {
        message = named.message;
        return 0;
    }
    TGmsl& msl = project->msl[project->currentMsl];
    copyText(msl.name, name.c_str());
    msl.KBrangeIn = uint16_t(firstKey);
    msl.KBrangeOut = uint16_t(firstKey + int(files.size()) - 1);

    std::vector<ImportItem> plan;
    for (size_t i = 0; i < files.size(); ++i) {
        ImportItem item;
        item.path = files[i];
        item.note = firstKey + int(i);
        item.source = KeySource::Chosen;
        item.multiSample = project->currentMsl;
        plan.push_back(item);
    }
    ImportRun fresh = run;
    fresh.policy = ConflictPolicy::Replace; // the Multi-Sample is new: nothing to overwrite
    return runImport(model, plan, fresh, outcome, message);
}

} // namespace tg
