// Waldorf Quantum / Iridium export: a ".map" sample map beside its samples on the card.
#pragma once

#include "export/templates/TemplateExporter.h"

namespace tg {

class QuantumExporter : public TemplateExporter {
  public:
    // `destination` is the root folder of the card or drive; the samples go to
    // samples/<folderName> and the map to samples/<folderName>/<mapName>.map.
    QuantumExporter(const Project& project, std::vector<int> selection, std::string destination,
                    uint32_t settings, std::string folderName, std::string mapName);

    int exportStep(KeySampleSource& source, const WavFileWriter& writeWav,
                   std::string& message) override;

    // "%1/samples/%2/%3.map".
    std::string mapPath() const;

    // The settings dialog's words for this format.
    static const char* const kDestinationHint;

  protected:
    std::string fileNameValue(const std::string& baseName) const override;
    void fillSampleValues(std::string& section, const SampleRow& row) const override;
    void fillMainValues(std::string& text) const override;
    bool isXml() const override { return false; }

  private:
    std::string folderName_;
    std::string mapName_;
};

} // namespace tg
