// Presets as project files without audio in the user data folder.
#include "extras/Presets.h"

#include "core/AtomicFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/Paths.h"
#include "extras/FileNameKeys.h"

#include <algorithm>
#include <filesystem>
#include <memory>

namespace fs = std::filesystem;

namespace tg {

namespace {

const char* const kEmptyName = "Empty preset names are not allowed!";
const char* const kNameTaken = "A preset with that name already exists!";
const char* const kNoSuchPreset = "There is no preset named \"%s\".";

bool presetExists(const std::string& name)
{
    std::error_code error;
    return fs::is_regular_file(presetFilePath(name), error);
}

} // namespace

std::string presetsFolder()
{
    return joinPath(userDataFolder(), "Presets");
}

std::string presetFilePath(const std::string& name)
{
    return joinPath(presetsFolder(), name + "." + kProjectExtension);
}

std::vector<std::string> listPresets()
{
    std::vector<std::string> names;
    std::error_code error;
    const std::string extension = std::string(".") + kProjectExtension;
    for (const fs::directory_entry& entry : fs::directory_iterator(presetsFolder(), error))
        if (entry.is_regular_file(error) && entry.path().extension() == extension)
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end(), naturalLess);
    return names;
}

int checkPresetName(const std::string& name, std::string& message)
{
    if (name.empty())
        return setMessage(message, "%s", kEmptyName);
    if (name.size() > size_t(kNameSize - 1))
        return setMessage(message, "A preset name has at most %d characters.", kNameSize - 1);
    if (withoutForbiddenNameChars(name) != name)
        return setMessage(message, "A preset name may not hold any of the characters %s",
                          kForbiddenNameChars);
    return 1;
}

void stripToPreset(const Project& project, Project& preset)
{
    preset = project;
    preset.dataPath[0] = '\0';
    preset.projectDir[0] = '\0';
    for (int m = 0; m < preset.mslCount; ++m) {
        for (int note = 0; note < kKeyCount; ++note) {
            const TGmsl_key& was = project.msl[m].keys[note];
            TGmsl_key key = makeNewKey(note);
            key.keyState = was.keyState;
            key.locked = was.locked;
            key.mapLowFlag = was.mapLowFlag;
            key.mapLow = was.mapLow;
            key.mapHighFlag = was.mapHighFlag;
            key.mapHigh = was.mapHigh;
            preset.msl[m].keys[note] = key;
        }
    }
}

int savePreset(const Project& project, const std::string& name, std::string& message,
               const OverwriteQuestion& askOverwrite)
{
    if (!checkPresetName(name, message))
        return 0;
    if (presetExists(name) && !askOverwrite)
        return setMessage(message, "%s", kNameTaken);
    std::error_code error;
    fs::create_directories(presetsFolder(), error);
    auto preset = std::make_unique<Project>();
    stripToPreset(project, *preset);
    return saveProject(*preset, presetsFolder(), name, message, false, askOverwrite);
}

int renamePreset(const std::string& from, const std::string& to, std::string& message)
{
    if (!presetExists(from))
        return setMessage(message, kNoSuchPreset, from.c_str());
    if (!checkPresetName(to, message))
        return 0;
    if (to == from)
        return 1;
    if (presetExists(to))
        return setMessage(message, "%s", kNameTaken);
    std::error_code error;
    fs::rename(presetFilePath(from), presetFilePath(to), error);
    if (error)
        return setMessage(message, "The preset \"%s\" could not be renamed: %s", from.c_str(),
                          error.message().c_str());
    syncParentFolder(presetFilePath(to));
    return 1;
}

int deletePreset(const std::string& name, std::string& message)
{
    if (!presetExists(name))
        return setMessage(message, kNoSuchPreset, name.c_str());
    std::error_code error;
    if (!fs::remove(presetFilePath(name), error))
        return setMessage(message, "The preset \"%s\" could not be deleted: %s", name.c_str(),
                          error.message().c_str());
    syncParentFolder(presetFilePath(name));
    return 1;
}

int applyPreset(Model& model, const std::string& name, const std::string& projectName,
                const std::string& dataPath, std::string& message)
{
    if (!presetExists(name))
        return setMessage(message, kNoSuchPreset, name.c_str());
    const Result named = checkProjectName(model, projectName, -1);
    if (!named.ok()) {
        message = named.message;
        return 0;
    }
    ProjectLoadOptions options;
    options.skipDataPathCheck = true; // a preset has no data path
    options.skipNameCheck = true;     // it is renamed at once
    ProjectLoadOutcome outcome;
    if (!loadProjects(model, presetsFolder(), {name + "." + kProjectExtension}, options, outcome,
                      message))
        return 0;
    Project& project = model.project(outcome.loaded.at(0));
    copyText(project.name, projectName.c_str());
    copyText(project.dataPath, dataPath.c_str());
    project.projectDir[0] = '\0';
    markKeysWithAudio(project);
    project.modified = 1;
    model.selectProject(outcome.loaded[0]);
    model.notifyListeners(
        [](TonegrabberModelListener& listener) { listener.projectListChanged(); });
    return 1;
}

} // namespace tg
