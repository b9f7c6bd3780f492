// Synthstrom Deluge export: a synth XML under SYNTHS and its samples under SAMPLES/TNGB.
#pragma once

#include "export/templates/TemplateExporter.h"

namespace tg {

class DelugeExporter : public TemplateExporter {
  public:
    // `destination` is the root folder of the card. Only the first Multi-Sample of the
    // selection (the selected layer) is exported; `baseName` names its synth and sample folder.
    DelugeExporter(const Project& project, std::vector<int> selection, std::string destination,
                   uint32_t settings, std::string baseName);

    // Creates SAMPLES/TNGB/<base name> when missing, renders the WAV files there, and writes
    // SYNTHS/<base name>.XML.
    int exportStep(KeySampleSource& source, const WavFileWriter& writeWav,
                   std::string& message) override;

    // The settings dialog's words for this format.
    static const char* const kDestinationHint;
    static const char* const kLayerHint;

  protected:
    std::string fileNameValue(const std::string& baseName) const override;
    void fillSampleValues(std::string& section, const SampleRow& row) const override;
    void fillMainValues(std::string& text) const override;

  private:
    std::string baseName_;
};

} // namespace tg
