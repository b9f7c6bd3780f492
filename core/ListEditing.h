// What the list panels do to Projects, Multi-Samples and keys, as whole operations: renaming
// and duplicating with the names' checks and the Key-Sample files that follow a name,
// deleting, moving, copying a Multi-Sample for pasting, locking and selecting keys, and
// pointing a Project at the folder that holds its Key-Samples. The desktop program and the
// command line both call these; every change reaches the model's listeners.
#pragma once

#include "core/Message.h"
#include "core/Records.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tg {

class Model;

// Asked with kOverwriteQuestion before Key-Sample files of another name are replaced; false
// cancels the operation. An empty function answers yes.
using OverwriteConfirmation = std::function<bool()>;

// Renames Project `index`. Its Key-Sample files are renamed with it.
Result renameProject(Model& model, int index, const std::string& name,
                     const OverwriteConfirmation& confirm = {});
// Renames Multi-Sample `index` of the current Project, with its Key-Sample files.
Result renameMultiSample(Model& model, int index, const std::string& name,
                         const OverwriteConfirmation& confirm = {});

// Saves Project `index` as "<folder>/<name>.TGprj"; the Project takes that name. Under a new
// name its Key-Sample files are copied to that name, so the file saved before keeps its
// audio too. Returns the save's message on failure.
Result saveProjectAs(Model& model, int index, const std::string& folder, const std::string& name,
                     const OverwriteConfirmation& confirm = {});

// Duplicates the current Project / Multi-Sample under the next free copy name; the copy's
// Key-Sample files are copied to its name. The copy becomes current.
Result duplicateProjectNamed(Model& model, const OverwriteConfirmation& confirm = {});
Result duplicateMultiSampleNamed(Model& model, const OverwriteConfirmation& confirm = {});

// A Multi-Sample copied for pasting, with or without its keys, and where its audio lies.
struct MultiSampleCopy {
    std::unique_ptr<TGmsl> msl;
    bool withKeys = false;
    std::string dataPath;    // of the Project it was copied from
    std::string projectName; // of the Project it was copied from
};
void copyMultiSample(const Project& project, int index, bool withKeys, MultiSampleCopy& copy);
// Pastes over the current Multi-Sample of the current Project, which keeps its name. Without
// keys the settings are replaced and the keys kept; with keys the key records are replaced
// too and the Key-Sample files are copied to the target's names.
Result pasteMultiSample(Model& model, const MultiSampleCopy& copy,
                        const OverwriteConfirmation& confirm = {});

// Sets `locked` / `keyState` of the given keys (0..127) of the current Multi-Sample.
Result setKeysLocked(Model& model, const std::vector<int>& notes, bool locked);
Result setKeysSelected(Model& model, const std::vector<int>& notes, bool selected);

// True when the Project has keys in use and not one of their Key-Sample files is found in
// its data path: the files were moved, and the user is offered to point at their folder.
bool keySamplesMissing(const Project& project);
constexpr const char* kRelocationTitle = "Relocation Option";
constexpr const char* kRelocationQuestion =
    "No key could be found for project \"%s\". Do you want to relocate your keys?";
// Makes `folder` the data path of Project `index` (the files are not moved) and looks for
// the Key-Samples there again.
Result relocateKeySamples(Model& model, int index, const std::string& folder);

// Notes "60,62,64-72" (or "all") as a list; false with `message` naming the bad part.
bool parseNoteList(const std::string& text, std::vector<int>& notes, std::string& message);

} // namespace tg
