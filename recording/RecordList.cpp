// Building and checking the record list of a recording run.
#include "recording/RecordList.h"

#include "core/Model.h"
#include "devices/DeviceTables.h"

#include <algorithm>
#include <filesystem>
#include <new>

namespace tg {

namespace {

void addEntry(RecordList& list, Model& model, int projectIndex, int mslIndex)
{
    RecordEntry entry;
    entry.projectIndex = projectIndex;
    entry.project = &model.project(projectIndex);
    entry.mslIndex = mslIndex;
    entry.msl = &entry.project->msl[mslIndex];
    const TGmsl& msl = *entry.msl;
    const int low = std::max(0, int(msl.KBrangeIn));
    const int high = std::min(kKeyCount - 1, int(msl.KBrangeOut));
    for (int note = low; note <= high; ++note) {
        const TGmsl_key& key = msl.keys[note];
        if (!key.keyState)
            continue;
        entry.keys.set(size_t(note));
        ++entry.keyCount;
        if (!key.hasAudio)
            ++entry.keysWithoutAudio;
    }
    list.totalKeys += entry.keyCount;
    list.keysWithoutAudio += entry.keysWithoutAudio;
    list.entries.push_back(entry);
}

void addProject(RecordList& list, Model& model, int projectIndex)
{
    const Project& project = model.project(projectIndex);
    for (int m = 0; m < project.mslCount; ++m)
        addEntry(list, model, projectIndex, m);
}

// The data path as the user typed it may hold Windows separators.
std::string withSlashes(std::string path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

} // namespace

const char* recordCommandText(int command)
{
    switch (command) {
    case kRecordSelectedMultiSample:
        return "Record selected Multi-Sample";
    case kRecordSelectedProject:
        return "Record selected Project";
    case kRecordAllProjects:
        return "Record all Projects";
    default:
        return "";
    }
}

Result buildRecordList(Model& model, int command, RecordList& list)
{
    list = RecordList();
    if (command != kRecordSelectedMultiSample && command != kRecordSelectedProject &&
        command != kRecordAllProjects)
        return Result::refused("illegal menu id");
    try {
        Project* current = model.currentProject();
        if (command == kRecordAllProjects) {
            for (int p = 0; p < model.projectCount(); ++p)
                addProject(list, model, p);
        } else if (current != nullptr && current->mslCount > 0) {
            const int p = model.currentProjectIndex();
            if (command == kRecordSelectedProject)
                addProject(list, model, p);
            else if (current->currentMsl >= 0 && current->currentMsl < current->mslCount)
                addEntry(list, model, p, current->currentMsl);
        }
    } catch (const std::bad_alloc&) {
        list = RecordList();
        return Result::refused("Unable to allocate memory for the record-list.");
    }
    return Result::done();
}

Result checkRecordList(const RecordList& list, const std::string& audioOutputDevice,
                       std::string& title)
{
    title.clear();
    for (const RecordEntry& entry : list.entries) {
        std::error_code error;
        const std::string path = withSlashes(entry.project->dataPath);
        if (path.empty() || !std::filesystem::is_directory(path, error))
            return Result::refused(formatText("The path \"%s\" doesn't exist.\n\nCheck the "
                                              "datapath in the project settings\nof the project "
                                              "\"%s\"",
                                              path.c_str(), entry.project->name));
    }
    if (list.totalKeys == 0)
        return Result::refused(
            "There aren't any Keys that need to be recorded.\nPlease click on \"All\" or "
            "\"Step\" on the left Keyboard Range Selector.\nYou can select single Keys to be "
            "recorded by Ctrl-clicking on them.");
    if (audioOutputDevice == kNoAudioOutEntry) {
        for (const RecordEntry& entry : list.entries) {
            if (std::string(entry.msl->AudioInDevice) == kVstPluginEntry) {
                title = "Info";
                return Result::refused("Please select a valid audio out device to sample your "
                                       "plugin.");
            }
        }
    }
    return Result::done();
}

} // namespace tg
