// Sequential Prophet-X export: one zip per program under px/<bank>/<category> on the drive.
#pragma once

#include "export/templates/TemplateExporter.h"
#include "export/templates/TemporaryFolder.h"

namespace tg {

// Where a Prophet-X program goes, as chosen in the tagging dialog.
struct ProphetXTarget {
    std::string userBank;    // folder under "px"
    std::string category;    // folder under the bank
    int programNumber = 2;   // number within the category
    std::string programName; // name after the number
};

class ProphetXExporter : public TemplateExporter {
  public:
    // `destination` is the root folder of the drive.
    ProphetXExporter(const Project& project, std::vector<int> selection, std::string destination,
                     uint32_t settings, ProphetXTarget target);

    // Refuses a program number that is taken, then renders the WAV files into the exporter's
    // temporary folder and writes the ".grp" description beside them.
    int exportStep(KeySampleSource& source, const WavFileWriter& writeWav,
                   std::string& message) override;
    // Zips the temporary folder to zipPath(), creating its folders when missing.
    int finishStep(std::string& message) override;

    // "%1/px/%2/%3/%4.zip": root, user bank, category, program number and name.
    std::string zipPath() const;
    // "%02d. %s": the program number and name, the zip's and description's base name.
    std::string programFileName() const;
    const std::string& temporaryFolder() const { return temporary_.path(); }

  protected:
    std::string fileNameValue(const std::string& baseName) const override;
    void fillSampleValues(std::string& section, const SampleRow& row) const override;
    bool isXml() const override { return false; }

  private:
    // 1 when no program of the category uses the number, else 0 with the refusal.
    int checkProgramNumber(std::string& message) const;

    ProphetXTarget target_;
    TemporaryFolder temporary_;
};

// The root frequency of MIDI note `root` with two decimals: 69 gives "440.00".
std::string pitchHertzText(int root);

} // namespace tg
