// The bridge from the export pipeline to the format writers that ask for Key-Samples one by one
// (the template exporters and the Korg writer): rendering through an ExportSession and writing
// sample files through the pipeline's WAV writer.
#pragma once

#include "export/ExportPipeline.h"
#include "export/templates/RenderedSample.h"

namespace tg {

// Renders each requested Key-Sample through `session` (abort, progress, loop-only, render,
// convert, gain).
class PipelineKeySource : public KeySampleSource {
  public:
    explicit PipelineKeySource(ExportSession& session) : session_(session) {}

    int render(int mslIndex, int ordinal, int note, RenderedSample& sample,
               std::string& message) override;
    void willRender(const std::vector<SelectedKey>& keys) override { session_.renderAhead(keys); }

  private:
    ExportSession& session_;
};

// The rendered note part of `key` as a format writer takes it: audio, loop and root key.
RenderedSample renderedSampleOf(const ExportedKey& key);

// A WavFileWriter over the services' WAV writer: the loop (when the sample has one) and the
// root key go into its `smpl` chunk.
WavFileWriter serviceWavWriter(const ExportServices& services);

} // namespace tg
