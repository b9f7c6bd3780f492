// The Volca Sample export: every Key-Sample of the selection in its own sample slot, sent as one
// transfer stream to play into the device's sync input, with a text listing the slots.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Writes the stream "<folder>/<baseName>.wav" (44.1 kHz, stereo, 16 bit) and the slot map
// "<folder>/<baseName>.txt". Key-Samples take slots `firstSlot`, `firstSlot` + 1, ... in
// selection order and key order; the pipeline must give mono audio (the format's allowed
// channel settings), which is sent as 16 bit at its own rate (at most 125 kHz). More
// Key-Samples than slots are refused. Returns 1, or 0 with the message after
// "TGexport_VolcaSample():\n\n".
int TGexport_VolcaSample(const std::string& folder, const std::string& baseName, int firstSlot,
                         Project* project, const std::vector<int>& mslIndices, uint32_t settings,
                         bool loopOnly, std::string& message, const ExportServices& services);

} // namespace tg
