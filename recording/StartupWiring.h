// Start-up with the real device layer: the core initialization whose device steps build the
// process-wide audio and MIDI device tables.
#pragma once

#include "core/Startup.h"

#include <string>

namespace tg {

class Model;
struct DeviceTables;

// Hooks whose MIDI and audio steps fill `tables` from RtMidi and PortAudio and report the
// real MIDI ports and the entries of the audio input list, and whose processing-speed step
// measures the loop search.
StartupHooks deviceStartupHooks(DeviceTables& tables);

// initializeCore() with those hooks over the process-wide tables, so that the model's audio
// input count matches the list the Multi-Samples keep channel choices for. `progress` may
// be empty. Returns 1, or 0 with `message`.
int initializeWithDevices(Model& model, const CoreFolders& folders, std::string& message,
                          const std::function<void(const std::string&)>& progress = {});

} // namespace tg
