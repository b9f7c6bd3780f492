// Presets: a Project's settings without its audio — every Multi-Sample with its devices, format,
// velocity and key ranges, record and loop settings and the keys chosen for recording — kept
// under a name as a project file in the user data folder's "Presets" folder.
#pragma once

#include "core/Message.h"
#include "core/ProjectFile.h"
#include "core/Records.h"

#include <string>
#include <vector>

namespace tg {

class Model;

// "Presets" in the user data folder (not created here).
std::string presetsFolder();

// The preset file of `name`: "<presets folder>/<name>.TGprj".
std::string presetFilePath(const std::string& name);

// The names of the stored presets, in natural order.
std::vector<std::string> listPresets();

// Whether `name` can name a preset: not empty, at most 47 characters, none of the characters
// names may not hold. Returns 1, or 0 with the reason in `message`.
int checkPresetName(const std::string& name, std::string& message);

// `project` as a preset: the same Project with every key back to a fresh key record that keeps
// only whether it is chosen for recording, its lock and its zone; no data path.
void stripToPreset(const Project& project, Project& preset);

// Stores `project` as the preset `name`. An existing preset of that name is replaced only when
// `askOverwrite` (may be empty: refuse) agrees. Returns 1, or 0 with `message`.
int savePreset(const Project& project, const std::string& name, std::string& message,
               const OverwriteQuestion& askOverwrite = {});

// Renames or deletes a stored preset. Return 1, or 0 with `message`.
int renamePreset(const std::string& from, const std::string& to, std::string& message);
int deletePreset(const std::string& name, std::string& message);

// A new Project of `model` from the preset `name`, named `projectName`, its Key-Samples to go
// to `dataPath`, unsaved and made current: ready to record. Returns 1, or 0 with `message`.
int applyPreset(Model& model, const std::string& name, const std::string& projectName,
                const std::string& dataPath, std::string& message);

} // namespace tg
