// List operations over the model and the Key-Sample files that follow the names.
#include "core/ListEditing.h"

#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace tg {

namespace {

namespace fs = std::filesystem;

// One Key-Sample file to move or copy to the name it gets.
struct FileTransfer {
    std::string from;
    std::string to;
};

// The existing Key-Sample files of one Multi-Sample and the names they take elsewhere.
void addKeySampleTransfers(const std::string& fromData, const std::string& fromProject,
                           const std::string& fromMsl, const std::string& toData,
                           const std::string& toProject, const std::string& toMsl,
                           std::vector<FileTransfer>& transfers)
{
    std::error_code error;
    for (int note = 0; note < kKeyCount; ++note) {
        FileTransfer t{keySampleFileName(fromData, fromProject, fromMsl, note),
                       keySampleFileName(toData, toProject, toMsl, note)};
        if (t.from != t.to && fs::is_regular_file(t.from, error))
            transfers.push_back(std::move(t));
    }
}

bool anyTargetExists(const std::vector<FileTransfer>& transfers)
{
    std::error_code error;
    for (const FileTransfer& t : transfers)
        if (fs::exists(t.to, error))
            return true;
    return false;
}

// Asks once when files of the new name would be replaced. False: the user said no.
bool confirmed(const std::vector<FileTransfer>& transfers, const OverwriteConfirmation& confirm)
{
    return !confirm || !anyTargetExists(transfers) || confirm();
}

Result performTransfers(const std::vector<FileTransfer>& transfers, bool move)
{
    for (const FileTransfer& t : transfers) {
        std::error_code error;
        if (move) {
            fs::rename(t.from, t.to, error);
        } else {
            fs::copy_file(t.from, t.to, fs::copy_options::overwrite_existing, error);
        }
        if (error)
            return Result::refused(formatText("Could not %s \"%s\" to \"%s\": %s",
                                              move ? "rename" : "copy", t.from.c_str(),
                                              t.to.c_str(), error.message().c_str()));
    }
    return Result::done();
}

void notifyMultiSample(Model& model, int index)
{
    model.notifyListeners([&](TonegrabberModelListener& l) {
        l.multiSampleChanged(index);
        l.multiSampleListChanged();
        l.keysChanged(model.currentProjectIndex(), index);
    });
}

void notifyProject(Model& model, int index)
{
    model.notifyListeners([&](TonegrabberModelListener& l) {
        l.projectChanged(index);
        l.projectListChanged();
        l.keysChanged(index, -1);
    });
}

const Result kNoMultiSample = Result::refused("There is no Multi-Sample selected.");

} // namespace

Result renameProject(Model& model, int index, const std::string& requested,
                     const OverwriteConfirmation& confirm)
{
    if (index < 0 || index >= model.projectCount())
        return Result::refused("There is no such project.");
    char name[kNameSize];
    copyText(name, withoutForbiddenNameChars(requested).c_str());
    Result checked = checkProjectName(model, name, index);
    if (!checked.ok())
        return checked;
    Project& project = model.project(index);
    std::vector<FileTransfer> transfers;
    for (int m = 0; m < project.mslCount; ++m)
        addKeySampleTransfers(project.dataPath, project.name, project.msl[m].name, project.dataPath,
                              name, project.msl[m].name, transfers);
    if (!confirmed(transfers, confirm))
        return Result::refused("");
    Result moved = performTransfers(transfers, true);
    copyText(project.name, name);
    project.modified = 1;
    markKeysWithAudio(project);
    notifyProject(model, index);
    return moved;
}

Result renameMultiSample(Model& model, int index, const std::string& requested,
                         const OverwriteConfirmation& confirm)
{
    Project* project = model.currentProject();
    if (!project || index < 0 || index >= project->mslCount)
        return kNoMultiSample;
    char name[kNameSize];
    copyText(name, withoutForbiddenNameChars(requested).c_str());
    Result checked = checkMultiSampleName(*project, name, index);
    if (!checked.ok())
        return checked;
    TGmsl& msl = project->msl[index];
    std::vector<FileTransfer> transfers;
    addKeySampleTransfers(project->dataPath, project->name, msl.name, project->dataPath,
                          project->name, name, transfers);
    if (!confirmed(transfers, confirm))
        return Result::refused("");
    Result moved = performTransfers(transfers, true);
    copyText(msl.name, name);
    project->modified = 1;
    markKeysWithAudio(*project);
    notifyMultiSample(model, index);
    return moved;
}

Result saveProjectAs(Model& model, int index, const std::string& folder,
                     const std::string& requested, const OverwriteConfirmation& confirm)
{
    if (index < 0 || index >= model.projectCount())
        return Result::refused("There is no such project.");
    char name[kNameSize];
    copyText(name, withoutForbiddenNameChars(requested).c_str());
    Result checked = checkProjectName(model, name, index);
    if (!checked.ok())
        return checked;
    Project& project = model.project(index);
    std::vector<FileTransfer> transfers;
    for (int m = 0; m < project.mslCount; ++m)
        addKeySampleTransfers(project.dataPath, project.name, project.msl[m].name, project.dataPath,
                              name, project.msl[m].name, transfers);
    if (!confirmed(transfers, confirm))
        return Result::refused("");
    Result copied = performTransfers(transfers, false);
    if (!copied.ok())
        return copied;
    std::string message;
    const int saved = saveProject(project, folder, name, message);
    markKeysWithAudio(project);
    notifyProject(model, index);
    return saved ? Result::done() : Result::refused(message);
}

Result duplicateProjectNamed(Model& model, const OverwriteConfirmation& confirm)
{
    if (!model.currentProject())
        return Result::refused("There is no project selected.");
    std::string copyName;
    Result named = projectCopyName(model, copyName);
    if (!named.ok())
        return named;
    const Project& source = model.view();
    std::vector<FileTransfer> transfers;
    for (int m = 0; m < source.mslCount; ++m)
        addKeySampleTransfers(source.dataPath, source.name, source.msl[m].name, source.dataPath,
                              copyName, source.msl[m].name, transfers);
    if (!confirmed(transfers, confirm))
        return Result::refused("");
    Result made = model.duplicateProject();
    if (!made.ok())
        return made;
    const int index = model.currentProjectIndex();
    Project& copy = model.project(index);
    copyText(copy.name, copyName.c_str());
    copy.modified = 1;
    Result copied = performTransfers(transfers, false);
    markKeysWithAudio(copy);
    notifyProject(model, index);
    return copied;
}

Result duplicateMultiSampleNamed(Model& model, const OverwriteConfirmation& confirm)
{
    Project* project = model.currentProject();
    if (!project || !model.currentMultiSample())
        return kNoMultiSample;
    std::string copyName;
    Result named = multiSampleCopyName(*project, copyName);
    if (!named.ok())
        return named;
    const std::string sourceName = model.currentMultiSample()->name;
    std::vector<FileTransfer> transfers;
    addKeySampleTransfers(project->dataPath, project->name, sourceName, project->dataPath,
                          project->name, copyName, transfers);
    if (!confirmed(transfers, confirm))
        return Result::refused("");
    Result made = model.duplicateMultiSample();
    if (!made.ok())
        return made;
    const int index = project->currentMsl;
    copyText(project->msl[index].name, copyName.c_str());
    Result copied = performTransfers(transfers, false);
    markKeysWithAudio(*project);
    notifyMultiSample(model, index);
    return copied;
}

void copyMultiSample(const Project& project, int index, bool withKeys, MultiSampleCopy& copy)
{
    copy.msl = std::make_unique<TGmsl>(project.msl[index]);
    copy.withKeys = withKeys;
    copy.dataPath = project.dataPath;
    copy.projectName = project.name;
}

Result pasteMultiSample(Model& model, const MultiSampleCopy& copy,
                        const OverwriteConfirmation& confirm)
{
    Project* project = model.currentProject();
    TGmsl* target = model.currentMultiSample();
    if (!project || !target)
        return kNoMultiSample;
    if (!copy.msl)
        return Result::refused("There is no copied Multi-Sample to paste.");
    std::vector<FileTransfer> transfers;
    if (copy.withKeys)
        addKeySampleTransfers(copy.dataPath, copy.projectName, copy.msl->name, project->dataPath,
                              project->name, target->name, transfers);
    if (!confirmed(transfers, confirm))
        return Result::refused("");

    // The name stays: it names the target's files and must stay unique among its siblings.
    const std::string name = target->name;
    if (copy.withKeys) {
        *target = *copy.msl;
    } else {
        TGmsl_key keys[kKeyCount];
        std::copy(std::begin(target->keys), std::end(target->keys), keys);
        *target = *copy.msl;
        std::copy(std::begin(keys), std::end(keys), target->keys);
    }
    copyText(target->name, name.c_str());
    project->modified = 1;
    Result copied = performTransfers(transfers, false);
    markKeysWithAudio(*project);
    notifyMultiSample(model, project->currentMsl);
    return copied;
}

namespace {

Result setKeyFlag(Model& model, const std::vector<int>& notes, uint8_t TGmsl_key::*flag, bool on)
{
    TGmsl* msl = model.currentMultiSample();
    if (!msl)
        return kNoMultiSample;
    for (int note : notes)
        if (note < 0 || note >= kKeyCount)
            return Result::refused(formatText("There is no key %d.", note));
    for (int note : notes)
        msl->keys[note].*flag = on ? 1 : 0;
    model.currentProject()->modified = 1;
    const int project = model.currentProjectIndex();
    const int index = model.currentProject()->currentMsl;
    model.notifyListeners([&](TonegrabberModelListener& l) { l.keysChanged(project, index); });
    return Result::done();
}

} // namespace

Result setKeysLocked(Model& model, const std::vector<int>& notes, bool locked)
{
    return setKeyFlag(model, notes, &TGmsl_key::locked, locked);
}

Result setKeysSelected(Model& model, const std::vector<int>& notes, bool selected)
{
    return setKeyFlag(model, notes, &TGmsl_key::keyState, selected);
}

bool keySamplesMissing(const Project& project)
{
    bool recorded = false;
    for (int m = 0; m < project.mslCount; ++m)
        for (const TGmsl_key& key : project.msl[m].keys) {
            if (key.hasAudio)
                return false;
            // Markers are only placed on a take, so a key with them had audio once.
            recorded = recorded || (key.keyState && key.Note_Out > 0);
        }
    return recorded;
}

Result relocateKeySamples(Model& model, int index, const std::string& folder)
{
    if (index < 0 || index >= model.projectCount())
        return Result::refused("There is no such project.");
    std::error_code error;
    if (!fs::is_directory(folder, error))
        return Result::refused(formatText("The folder \"%s\" does not exist.", folder.c_str()));
    Project& project = model.project(index);
    copyText(project.dataPath, folder.c_str());
    project.modified = 1;
    markKeysWithAudio(project);
    notifyProject(model, index);
    return Result::done();
}

bool parseNoteList(const std::string& text, std::vector<int>& notes, std::string& message)
{
    notes.clear();
    if (text == "all") {
        for (int note = 0; note < kKeyCount; ++note)
            notes.push_back(note);
        return true;
    }
    size_t begin = 0;
    while (begin <= text.size()) {
        const size_t end = std::min(text.find(',', begin), text.size());
        const std::string part = text.substr(begin, end - begin);
        int low = -1;
        int high = -1;
        char extra = 0;
        const int fields = std::sscanf(part.c_str(), "%d-%d%c", &low, &high, &extra);
        if (fields == 1 && part.find('-') == std::string::npos)
            high = low;
        const bool valid = (fields == 1 && high == low) || fields == 2;
        if (!valid || low < 0 || high >= kKeyCount || low > high)
            return setMessage(message,
                              "bad key list part \"%s\" (keys are 0-127, e.g. 60,62,64-72)",
                              part.c_str()) != 0;
        for (int note = low; note <= high; ++note)
            notes.push_back(note);
        begin = end + 1;
    }
    return true;
}

} // namespace tg
