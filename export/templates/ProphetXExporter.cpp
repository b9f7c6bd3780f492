// Prophet-X program zip: WAV files and a group description, filed by bank, category and number.
#include "export/templates/ProphetXExporter.h"

#include "core/Message.h"
#include "core/Paths.h"
#include "export/templates/TemplateText.h"

#include <cmath>
#include <filesystem>

namespace tg {

ProphetXExporter::ProphetXExporter(const Project& project, std::vector<int> selection,
                                   std::string destination, uint32_t settings,
                                   ProphetXTarget target)
    : TemplateExporter(project, std::move(selection), std::move(destination), settings,
                       "ProphetXExporter", "ProphetXTemplate_Main.txt",
                       "ProphetXTemplate_Sample.txt"),
      target_(std::move(target))
{
}

std::string pitchHertzText(int root)
{
    return formatText("%.2f", 440.0 * std::pow(2.0, (root - 69) / 12.0));
}

std::string ProphetXExporter::programFileName() const
{
    return formatText("%02d. %s", target_.programNumber, target_.programName.c_str());
}

std::string ProphetXExporter::zipPath() const
{
    return formatText("%s/px/%s/%s/%s.zip", destination_.c_str(), target_.userBank.c_str(),
                      target_.category.c_str(), programFileName().c_str());
}

std::string ProphetXExporter::fileNameValue(const std::string& baseName) const
{
    return baseName + ".wav";
}

void ProphetXExporter::fillSampleValues(std::string& section, const SampleRow& row) const
{
    fillZoneValues(section, row);
    fillBytes(section, "pitchHertz", pitchHertzText(row.keyRoot));
    fillInt(section, "loopStart", row.loopStart);
    fillInt(section, "loopStop", row.loopEnd);
}

int ProphetXExporter::checkProgramNumber(std::string& message) const
{
    namespace fs = std::filesystem;
    const std::string number = formatText("%02d", target_.programNumber);
    const fs::path zip(zipPath());
    std::error_code error;
    bool taken = fs::exists(zip, error);
    // The number is the program's identity in its category: another name does not free it.
    for (fs::directory_iterator it(zip.parent_path(), error), end; !taken && !error && it != end;
         it.increment(error))
        taken = it->path().filename().string().compare(0, number.size() + 1, number + ".") == 0;
    if (taken)
        return setMessage(message,
                          "A program with the same number (%s) already exists in this "
                          "user-bank/category.",
                          number.c_str());
    return 1;
}

int ProphetXExporter::exportStep(KeySampleSource& source, const WavFileWriter& writeWav,
                                 std::string& message)
{
    if (!checkTemplates(message) || !checkProgramNumber(message))
        return 0;
    std::string error;
    if (!temporary_.create(error))
        return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
    std::vector<int> layers;
    for (size_t i = 0; i < selection_.size(); ++i)
        layers.push_back(static_cast<int>(i));
    if (!renderLayers(layers, source, writeWav, temporary_.path(), "<#kn#>-<#msi#>-<#mn#>",
                      message))
        return 0;
    return writeDescription(joinPath(temporary_.path(), programFileName() + ".grp"), message);
}

int ProphetXExporter::finishStep(std::string& message)
{
    std::string error;
    const std::string path = zipPath();
    if (!createFolders(std::filesystem::path(path).parent_path().string(), error) ||
        !zipFolderFiles(temporary_.path(), path, "Compressing Prophet-X zip file.", progress_,
                        abortFlag_, error))
        return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
    return 1;
}

} // namespace tg
