// Deluge synth: one sample oscillator whose zones are the Key-Samples of the selected layer.
#include "export/templates/DelugeExporter.h"

#include "core/Message.h"
#include "core/Paths.h"
#include "export/templates/TemplateText.h"
#include "export/templates/TemporaryFolder.h"

namespace tg {

const char* const DelugeExporter::kDestinationHint =
    "Please browse to the root directory of your deluge SD-Card "
    "or copy the files in the generated folders \"SYNTHS\" and \"SAMPLES\" manually to your "
    "deluge.";
const char* const DelugeExporter::kLayerHint =
    "\nOnly the selected multisample layer will be exported and there is only one loop option "
    "for all samples.";

DelugeExporter::DelugeExporter(const Project& project, std::vector<int> selection,
                               std::string destination, uint32_t settings, std::string baseName)
    : TemplateExporter(project, std::move(selection), std::move(destination), settings,
                       "DelugeExporter", "DelugeTemplate_Main.xml", "DelugeTemplate_Sample.xml"),
      baseName_(std::move(baseName))
{
}

std::string DelugeExporter::fileNameValue(const std::string& baseName) const
{
    return "SAMPLES/TNGB/" + baseName_ + "/" + baseName + ".wav";
}

void DelugeExporter::fillSampleValues(std::string& section, const SampleRow& row) const
{
    fillZoneValues(section, row);
    fillInt(section, "sampleStart", 0);
    fillInt(section, "sampleStop", row.frames);
    fillInt(section, "transpose", 60 - row.keyRoot);
    fillInt(section, "loopStart", row.loopStart);
    fillInt(section, "loopStop", row.loopEnd);
}

void DelugeExporter::fillMainValues(std::string& text) const
{
    fillInt(text, "loopMode", loopAll_ ? 2 : 0);
}

int DelugeExporter::exportStep(KeySampleSource& source, const WavFileWriter& writeWav,
                               std::string& message)
{
    if (!checkTemplates(message))
        return 0;
    if (selection_.empty())
        return setMessage(message, "%sno Multi-Sample selected", prefix().c_str());
    std::string error;
    const std::string samples = joinPath(destination_, "SAMPLES");
    const std::string tngb = joinPath(samples, "TNGB");
    const std::string folder = joinPath(tngb, baseName_);
    if (!createFolders(samples, error) || !createFolders(tngb, error) ||
        !createFolders(folder, error))
        return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
    if (!renderLayers({0}, source, writeWav, folder, "<#kn#><#mn#>", message))
        return 0;
    const std::string synths = joinPath(destination_, "SYNTHS");
    if (!createFolders(synths, error))
        return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
    return writeDescription(synths + formatText("/%s.XML", baseName_.c_str()), message);
}

} // namespace tg
