// Importing WAV and AIFF files as Key-Samples: where each file goes (key and velocity layer),
// what happens to keys that already hold a Key-Sample, and the import itself: conversion to
// the Multi-Sample's format, the file's loop kept, auto-note for files without markers.
#pragma once

#include "core/Message.h"
#include "core/Records.h"

#include <functional>
#include <string>
#include <vector>

namespace tg {

class Model;

// Which files a folder contributes.
enum class ImportFileTypes { Audio, Wav, Aiff };

// Files named directly are taken as they are, in the given order; a folder adds its WAV and/or
// AIFF files (not those of its subfolders) in natural name order. Returns 1, or 0 with
// `message` when a path does not exist or nothing is left to import.
int collectImportFiles(const std::vector<std::string>& paths, ImportFileTypes types,
                       std::vector<std::string>& files, std::string& message);

// Where the key of an imported file came from.
enum class KeySource {
    FileChunk, // the file's `smpl` or INST root key
    FileName,  // a note name or MIDI number in its name
    Chosen,    // given by the user
    Unknown,   // none yet: the user has to choose
};

// One file of an import and where it goes.
struct ImportItem {
    std::string path;
    int note = -1; // 0..127, -1 while unknown
    KeySource source = KeySource::Unknown;
    int layer = 1;         // velocity layer, 1 = the chosen Multi-Sample
    int multiSample = -1;  // target index; mslCount or above: a layer the import adds
    bool occupied = false; // the target key holds a Key-Sample already
};

struct ImportRequest {
    int multiSample = -1; // the chosen Multi-Sample (layer 1); -1: the Project's current one
    // The key of the first file whose key is unknown; the next such file gets the next key
    // and so on. -1: such files stay unknown.
    int firstChosenKey = -1;
    // >0: every file goes into this layer, whatever its name says.
    int layer = 0;
};

// What to do with a file whose key already holds a Key-Sample.
enum class ConflictPolicy {
    Refuse,  // nothing is imported; the first such key is named
    Replace, // the file replaces the Key-Sample
    Skip,    // the file is left out
    Ask,     // the question is asked, file by file
};
enum class ConflictAnswer { Replace, Skip, Cancel };
using ConflictQuestion = std::function<ConflictAnswer(const ImportItem& item)>;

// Progress: the file being imported and the share done; false stops after that file.
using ImportProgress = std::function<bool(const std::string& text, double fraction)>;

// Where the files go in `project`: the key from the file's root key, else from its name, else
// from `request.firstChosenKey`; the layer from `request.layer`, else from a layer tag in the
// name (layers count from 1, or from 0 when a file is tagged 0), else 1. Layer n lands in the
// Multi-Sample `n - 1` places after the chosen one. Returns 1, or 0 with `message` when there
// is no Multi-Sample or a file cannot be read.
int planImport(const Project& project, const std::vector<std::string>& files,
               const ImportRequest& request, std::vector<ImportItem>& plan, std::string& message);

// Fills the target Multi-Sample and `occupied` of every item again after keys or layers were
// changed by hand (the import dialog), counting layers from `chosenMultiSample`.
void updateImportTargets(const Project& project, int chosenMultiSample,
                         std::vector<ImportItem>& plan);

// The refusals that stop an import before it starts: a file without a key, two files for the
// same key of the same layer, more than 128 Multi-Samples. Returns 1 when the plan can run.
int checkImportPlan(const Project& project, const std::vector<ImportItem>& plan,
                    std::string& message);

struct ImportOutcome {
    int imported = 0;
    int skipped = 0;
    int layersAdded = 0;
    bool cancelled = false;
    bool refusedOccupied = false; // ConflictPolicy::Refuse met a key holding a Key-Sample
};

struct ImportRun {
    ConflictPolicy policy = ConflictPolicy::Ask;
    ConflictQuestion ask;    // used with ConflictPolicy::Ask
    ImportProgress progress; // may be empty
};

// Imports `plan` into the current Project of `model`: adds the layers it needs (copies of the
// chosen Multi-Sample without Key-Samples, velocities split evenly over the layers), then reads
// each file, converts it to its Multi-Sample's format (band-limited resampling where the rates
// differ), writes it as the key's Key-Sample file and sets the key: a file with a loop keeps
// it and its whole audio as the note; a file without one is auto-noted. Returns 1, or 0 with
// `message`; keys imported before a failure stay imported.
int runImport(Model& model, const std::vector<ImportItem>& plan, const ImportRun& run,
              ImportOutcome& outcome, std::string& message);

// A folder of one-shot samples as one new Multi-Sample of the current Project, named after
// the folder, one file per key upward from `firstKey` in natural name order (root keys and
// names of the files aside). Where the folder's name is taken, or Key-Sample files of that name
// lie in the data folder already, the suffix rule names it, so nothing is overwritten and
// `run.policy` plays no part. Returns 1, or 0 with `message`.
int importSoundLibrary(Model& model, const std::string& folder, int firstKey, const ImportRun& run,
                       ImportOutcome& outcome, std::string& message);

} // namespace tg
