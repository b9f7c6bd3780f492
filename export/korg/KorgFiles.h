// Korg multisample (KMP) and sample (KSF) files as byte images, all integers big-endian.
#pragma once

#include "core/Records.h"
#include "export/templates/RenderedSample.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// One zone of a KMP: a Key-Sample, or a gap zone for keys no Key-Sample covers.
struct KmpZone {
    bool gap = false;        // a "SKIPPEDSAMPL" zone
    int originalKey = 0;     // MIDI note of the Key-Sample (first key of a gap)
    int topKey = 0;          // highest key the zone plays
    std::string sampleFile;  // KSF file name (12 bytes in the file)
};

// The zones of a Multi-Sample, ascending: each present and recorded Key-Sample in the key
// range, each preceded by a gap zone when keys below it are left uncovered. Sample file
// names are left empty for the caller (gaps get "SKIPPEDSAMPL").
std::vector<KmpZone> kmpZones(const TGmsl& msl);

// The KMP file: MSP1 (16-byte name, zone count, 0), NAME (24 bytes), RLP1 (18 bytes per zone),
// MNO1 (KMP number).
std::vector<uint8_t> buildKmp(const std::string& nameField16, const std::string& nameChunk24,
                              const std::vector<KmpZone>& zones, uint32_t kmpNumber);

// The sample data of one KSF: one channel of `sample` (channel 0 for mono audio) as
// big-endian signed 16-bit, or signed 8-bit when `bits` is 8.
std::vector<uint8_t> ksfSampleData(const RenderedSample& sample, int channel, int bits);

// The KSF file: SMP1 (16-byte name and four addresses), SMD1 (rate, attributes, loop tune,
// channels 1, bits, frames, data), SNO1 (sample number), NAME (24 bytes). A sample without a
// loop plays once: loop start 0, loop end its last frame, attributes 128.
std::vector<uint8_t> buildKsf(const std::string& sampleName16, const std::string& nameChunk24,
                              const RenderedSample& sample, int channel, int bits,
                              uint32_t sampleNumber);

} // namespace tg
