// The pipeline every exporter shares: working copy, tail trimming, level analysis, and per
// Key-Sample rendering, conversion and gain, handing each finished Key-Sample to a sink.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// What an exporter was asked to do.
struct ExportJob {
    std::string nameLine; // "TGexport_WavFiles():\n\n": the prefix of every message
    Project* project = nullptr;
    std::vector<int> mslIndices; // selected Multi-Samples, in order
    uint32_t settings = 0;       // Export Settings word
    bool loopOnly = false;
};

// One Key-Sample ready to be written: rendered, converted to the target format, gained.
struct ExportedKey {
    const TGmsl* msl = nullptr;
    const TGmsl_key* key = nullptr;
    int mslIndex = 0;     // place in the Project
    int ordinal = 0;      // place in the selection, from 0: the Multi-Sample index of names
    int note = 0;         // MIDI note
    bool hasLoop = false; // the Key-Sample has an enabled loop with Loop_Out > Loop_In
    RenderedKey audio;
};

// The format-specific part of an exporter.
class ExportSink {
  public:
    virtual ~ExportSink() = default;
    // Before the first Key-Sample of each selected Multi-Sample.
    virtual int beginMultiSample(const TGmsl& msl, int ordinal, std::string& message);
    // One finished Key-Sample.
    virtual int writeKey(const ExportedKey& key, std::string& message) = 0;
    // After the last Key-Sample, while the working markers are still in place.
    virtual int finish(std::string& message);
};

// Gains per selected Multi-Sample (by selection ordinal) and key, from level analysis.
using LayerGains = std::vector<std::array<double, kKeyCount>>;

// Step 4: Note_Out = min(Loop_Out + 16, Note_Out) for every looped key of the selection.
void trimAfterLoops(Project& project, const std::vector<int>& mslIndices);

// Step 6.3: the loop-only rule for one key (changes Note_In/Note_Out when it applies).
void applyLoopOnly(TGmsl_key& key);

// Step 5: level analysis. Fills `gains` (1.0 where unchanged). Returns 0 with
// "Export aborted." (no prefix) when a file cannot be read or the abort flag is set.
int analyseLevels(const Project& project, const std::vector<int>& mslIndices,
                  const ExportServices& services, LayerGains& gains, std::string& message);

// Number of Key-Samples the pipeline will hand to the sink.
int countExportKeys(const Project& project, const std::vector<int>& mslIndices);

// The whole pipeline. The Project is restored on every exit; messages carry the name line.
int runExportPipeline(const ExportJob& job, const ExportServices& services, ExportSink& sink,
                      std::string& message);

} // namespace tg
