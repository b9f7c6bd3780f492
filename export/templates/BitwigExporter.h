// Bitwig Studio export: a ".multisample" zip holding multisample.xml and the WAV files.
#pragma once

#include "export/templates/TemplateExporter.h"
#include "export/templates/TemporaryFolder.h"

namespace tg {

class BitwigExporter : public TemplateExporter {
  public:
    // `destination` is the path of the ".multisample" file; every selected Multi-Sample is a
    // velocity layer of it.
    BitwigExporter(const Project& project, std::vector<int> selection, std::string destination,
                   uint32_t settings);

    // Renders the WAV files into the exporter's temporary folder and writes multisample.xml
    // beside them.
    int exportStep(KeySampleSource& source, const WavFileWriter& writeWav,
                   std::string& message) override;
    // Zips the temporary folder's files into the destination.
    int finishStep(std::string& message) override;

    const std::string& temporaryFolder() const { return temporary_.path(); }

  protected:
    std::string fileNameValue(const std::string& baseName) const override;
    void fillSampleValues(std::string& section, const SampleRow& row) const override;

  private:
    TemporaryFolder temporary_;
};

} // namespace tg
