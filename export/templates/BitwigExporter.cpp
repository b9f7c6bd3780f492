// Bitwig Studio multisample: WAV files named by the long tag template, zipped with the XML.
#include "export/templates/BitwigExporter.h"

#include "core/Message.h"
#include "core/Paths.h"
#include "export/templates/TemplateText.h"

#include <filesystem>

namespace tg {

BitwigExporter::BitwigExporter(const Project& project, std::vector<int> selection,
                               std::string destination, uint32_t settings)
    : TemplateExporter(project, std::move(selection), std::move(destination), settings,
                       "BitwigExporter", "BitwigTemplate_Main.xml", "BitwigTemplate_Sample.xml")
{
}

std::string BitwigExporter::fileNameValue(const std::string& baseName) const
{
    return baseName + ".wav";
}

void BitwigExporter::fillSampleValues(std::string& section, const SampleRow& row) const
{
    fillZoneValues(section, row);
    fillFloat(section, "sampleStart", 0.0);
    fillFloat(section, "sampleStop", row.frames);
    fillTextValue(section, "loopMode", row.keyLoopEnabled ? "sustain" : "off");
    fillFloat(section, "loopStart", row.loopStart);
    fillFloat(section, "loopStop", row.loopEnd);
}

int BitwigExporter::exportStep(KeySampleSource& source, const WavFileWriter& writeWav,
                               std::string& message)
{
    if (!checkTemplates(message))
        return 0;
    std::string error;
    if (!temporary_.create(error))
        return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
    std::vector<int> layers;
    for (size_t i = 0; i < selection_.size(); ++i)
        layers.push_back(static_cast<int>(i));
    if (!renderLayers(layers, source, writeWav, temporary_.path(),
                      "<#prj#>-<#msi#>-<#ms#>-<#mn#>-<#kn#>-<#n#>", message))
        return 0;
    return writeDescription(joinPath(temporary_.path(), "multisample.xml"), message);
}

int BitwigExporter::finishStep(std::string& message)
{
    std::string error;
    const std::string parent = std::filesystem::path(destination_).parent_path().string();
    if (!parent.empty() && !createFolders(parent, error))
        return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
    if (!zipFolderFiles(temporary_.path(), destination_, "Compressing Bitwig multisample file.",
                        progress_, abortFlag_, error))
        return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
    return 1;
}

} // namespace tg
