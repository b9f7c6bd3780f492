// Quantum sample map: one line per Key-Sample with positions as fractions of the file.
#include "export/templates/QuantumExporter.h"

#include "core/Message.h"
#include "core/Paths.h"
#include "export/templates/TemplateText.h"
#include "export/templates/TemporaryFolder.h"

namespace tg {

const char* const QuantumExporter::kDestinationHint =
    "Please browse and select the root directory of your Quantum SD card / USB drive."
    "\nIn there should be a directory called 'samples'. If not, one will be created during "
    "export. "
    "Do NOT select the 'samples' folder.\nThere is only one loop option for all samples.";

QuantumExporter::QuantumExporter(const Project& project, std::vector<int> selection,
                                 std::string destination, uint32_t settings, std::string folderName,
                                 std::string mapName)
    : TemplateExporter(project, std::move(selection), std::move(destination), settings,
                       "QuantumExporter", "QuantumTemplate_Main.map", "QuantumTemplate_Sample.map"),
      folderName_(std::move(folderName)), mapName_(std::move(mapName))
{
}

std::string QuantumExporter::mapPath() const
{
    return formatText("%s/samples/%s/%s.map", destination_.c_str(), folderName_.c_str(),
                      mapName_.c_str());
}

std::string QuantumExporter::fileNameValue(const std::string& baseName) const
{
    return "samples/" + folderName_ + "/" + baseName + ".wav";
}

void QuantumExporter::fillSampleValues(std::string& section, const SampleRow& row) const
{
    // The map places everything as a fraction of the file; an empty file has no positions.
    const double frames = row.frames > 0 ? row.frames : 1.0;
    fillZoneValues(section, row);
    fillInt(section, "sampleStart", 0);
    fillInt(section, "sampleStop", row.frames);
    fillInt(section, "transpose", 60 - row.keyRoot);
    fillInt(section, "loopMode", loopAll_ ? 1 : 0);
    fillFloat(section, "loopStart", row.fileHasLoop ? row.loopStart / frames : 0.0);
    fillFloat(section, "loopStop", row.fileHasLoop ? row.loopEnd / frames : 1.0);
}

void QuantumExporter::fillMainValues(std::string& text) const
{
    fillInt(text, "loopMode", loopAll_ ? 1 : 0);
}

int QuantumExporter::exportStep(KeySampleSource& source, const WavFileWriter& writeWav,
                                std::string& message)
{
    if (!checkTemplates(message))
        return 0;
    std::string error;
    const std::string samples = joinPath(destination_, "samples");
    const std::string folder = joinPath(samples, folderName_);
    if (!createFolders(samples, error) || !createFolders(folder, error))
        return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
    std::vector<int> layers;
    for (size_t i = 0; i < selection_.size(); ++i)
        layers.push_back(static_cast<int>(i));
    if (!renderLayers(layers, source, writeWav, folder, "<#kn#>-<#msi#>-<#mn#>", message))
        return 0;
    return writeDescription(mapPath(), message);
}

} // namespace tg
