// The pipeline every exporter shares: working copy, tail trimming, level analysis, and per
// Key-Sample rendering, conversion and gain, handing each finished Key-Sample to a sink.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"
#include "export/KeySampleFile.h"

#include <array>
#include <cstdint>
#include <memory>
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
    // Key-Samples rendered at once on worker threads while this thread writes (the services'
    // renderThreads when the exporter allows it); 1 renders each on request, here.
    int renderThreads = 1;
    // How often the writer asks for each Key-Sample: the Korg writer's stereo export renders
    // every key once per channel. Progress counts every render.
    int rendersPerKey = 1;
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

class KeptRecordings;

// Step 5: level analysis. Fills `gains` (1.0 where unchanged). Returns 0 with
// "Export aborted." (no prefix) when a file cannot be read or the abort flag is set. With
// `kept`, the recordings read are kept there (as far as its budget goes) for rendering.
int analyseLevels(const Project& project, const std::vector<int>& mslIndices,
                  const ExportServices& services, LayerGains& gains, std::string& message,
                  KeptRecordings* kept = nullptr);

// Number of Key-Samples the pipeline will hand to the sink.
int countExportKeys(const Project& project, const std::vector<int>& mslIndices);

class RenderAhead;

// One export in progress: the steps before the first Key-Sample (working copy, key ranges,
// trimming, level analysis) and the per-key steps (abort, progress, loop-only, render,
// convert, gain). Every format renders through it, whether the pipeline pushes keys to a sink
// or a format writer asks for them. Destroying the session puts the Project back.
class ExportSession {
  public:
    ExportSession(const ExportJob& job, const ExportServices& services);
    ~ExportSession();
    ExportSession(const ExportSession&) = delete;
    ExportSession& operator=(const ExportSession&) = delete;

    // Checks the pointers and the selection, takes the working copy, maps the key ranges,
    // trims after loops and analyses levels as the settings ask. Returns 1, or 0 with the
    // message behind the job's name line.
    int begin(std::string& message);
    // Renders key `note` of the selection's `ordinal`-th Multi-Sample (ordinal from 0), converted
    // to the export format and gained. Returns 1, or 0 with the bare message ("Export aborted."
    // when the abort flag is set).
    int renderKey(int ordinal, int note, ExportedKey& out, std::string& message);
    // Announces the keys the writer will ask for, in its order: with more than one render
    // thread in the job they are rendered ahead on workers (abort, progress and the live
    // markers stay with renderKey() on this thread). A key asked for out of this order is
    // rendered on request as before. Call after begin(), at most once.
    void renderAhead(const std::vector<SelectedKey>& keys);

    const ExportJob& job() const { return job_; }

  private:
    class WorkingCopy;
    struct PlannedKey;

    // Read (or take the kept recording), render, convert and gain one key: the part of a
    // render that touches nothing shared, so that workers may run it.
    int renderAudio(const TGmsl_key& key, const PlannedKey& planned, RenderedKey& out,
                    std::string& message) const;
    // The index of (ordinal, note) in the render-ahead plan at or after the next key to take.
    bool findPlanned(int ordinal, int note, size_t& index) const;

    const ExportJob& job_;
    const ExportServices& services_;
    std::unique_ptr<WorkingCopy> restore_;
    std::unique_ptr<KeptRecordings> kept_;
    LayerGains gains_;
    int total_ = 0; // Key-Samples to render
    int done_ = 0;  // Key-Samples rendered so far
    std::vector<PlannedKey> plan_;
    std::unique_ptr<RenderAhead> ahead_; // last: its workers stop before the rest goes
};

// The whole pipeline. The Project is restored on every exit; messages carry the name line.
int runExportPipeline(const ExportJob& job, const ExportServices& services, ExportSink& sink,
                      std::string& message);

} // namespace tg
