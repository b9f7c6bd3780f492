// Rendering, template filling and description writing shared by the template exporters.
#include "export/templates/TemplateExporter.h"

#include "core/AtomicFile.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "export/KeySampleFile.h"
#include "export/NamingTags.h"
#include "export/templates/TemplateText.h"
#include "export/xml/XmlText.h"

#include <fstream>
#include <iterator>

namespace tg {

namespace {
constexpr size_t kUserTextLength = 24;
}

BaseExporter::BaseExporter(const Project& project, std::vector<int> selection,
                           std::string destination, uint32_t settings)
    : project_(&project), selection_(std::move(selection)), destination_(std::move(destination)),
      settings_(settings)
{
}

BaseExporter::~BaseExporter() = default;

int BaseExporter::finishStep(std::string&)
{
    return 1;
}

int readTemplateFile(const std::string& path, std::string& text)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return 0;
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad())
        return 0;
    size_t start = 0;
    while (bytes.compare(start, 2, "%%") == 0) {
        const size_t end = bytes.find('\n', start);
        start = end == std::string::npos ? bytes.size() : end + 1;
    }
    text = bytes.substr(start);
    return 1;
}

int writeWholeFile(const std::string& path, const std::string& bytes, std::string& message)
{
    AtomicFile file(path);
    if (!file.open())
        return setMessage(message, "unable to open \"%s\"", path.c_str());
    if (!file.write(bytes.data(), bytes.size()) || !file.commit())
        return setMessage(message, "unable to write \"%s\"", path.c_str());
    return 1;
}

TemplateExporter::TemplateExporter(const Project& project, std::vector<int> selection,
                                   std::string destination, uint32_t settings, const char* nameLine,
                                   const char* mainFile, const char* sampleFile)
    : BaseExporter(project, std::move(selection), std::move(destination), settings),
      nameLine_(nameLine)
{
    const std::string resources = resourcesFolder();
    mainPath_ = joinPath(resources.empty() ? "Resources" : resources, mainFile);
    samplePath_ = joinPath(resources.empty() ? "Resources" : resources, sampleFile);
    templatesRead_ = readTemplateFile(mainPath_, mainTemplate_) &&
                     readTemplateFile(samplePath_, sampleTemplate_);
}

int TemplateExporter::checkTemplates(std::string& message) const
{
    if (templatesRead_)
        return 1;
    return setMessage(message, "%sunable to read the templates \"%s\" and \"%s\"", prefix().c_str(),
                      mainPath_.c_str(), samplePath_.c_str());
}

void TemplateExporter::fillTextValue(std::string& text, const std::string& key,
                                     const std::string& value) const
{
    const std::string latin1 = toLatin1(value);
    fillBytes(text, key, isXml() ? escapeXml(latin1) : latin1);
}

void TemplateExporter::fillZoneValues(std::string& section, const SampleRow& row) const
{
    fillTextValue(section, "fileName", row.fileName);
    fillFloat(section, "gain", 0.0);
    fillFloat(section, "tune", 0.0);
    fillInt(section, "keyLow", row.keyLow);
    fillInt(section, "keyHigh", row.keyHigh);
    fillInt(section, "keyRoot", row.keyRoot);
    fillInt(section, "velocityLow", row.velocityLow);
    fillInt(section, "velocityHigh", row.velocityHigh);
}

void TemplateExporter::fillUserText(std::string& text, const std::string& key,
                                    const std::string& value) const
{
    // Cut after the conversion so that the cut counts characters, not UTF-8 bytes.
    const std::string latin1 = firstCharacters(toLatin1(value), kUserTextLength);
    fillBytes(text, key, isXml() ? escapeXml(latin1) : latin1);
}

int TemplateExporter::renderLayers(const std::vector<int>& ordinals, KeySampleSource& source,
                                   const WavFileWriter& writeWav, const std::string& folder,
                                   const std::string& nameTemplate, std::string& message)
{
    std::vector<SelectedKey> order;
    for (int ordinal : ordinals)
        for (int note : exportedKeys(project_->msl[selection_[static_cast<size_t>(ordinal)]]))
            order.push_back({ordinal, note});
    source.willRender(order);
    for (int ordinal : ordinals) {
        const int mslIndex = selection_[static_cast<size_t>(ordinal)];
        const TGmsl& msl = project_->msl[mslIndex];
        for (int note : exportedKeys(msl)) {
            RenderedSample sample;
            std::string error;
            if (!source.render(mslIndex, ordinal, note, sample, error))
                return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
            const std::string baseName =
                expandNamingTags(*project_, msl, ordinal, note, nameTemplate);
            if (!writeWav(joinPath(folder, baseName + ".wav"), sample, error))
                return setMessage(message, "%s%s", prefix().c_str(), error.c_str());

            SampleRow row;
            row.mslIndex = mslIndex;
            row.ordinal = ordinal;
            row.note = note;
            row.fileName = fileNameValue(baseName);
            row.frames = sample.frames();
            row.fileHasLoop = sample.hasLoop;
            row.loopStart = sample.hasLoop ? sample.loopStart : 0;
            row.loopEnd = sample.hasLoop ? sample.loopEnd : row.frames;
            row.keyLow = msl.keys[note].mapLow;
            row.keyHigh = msl.keys[note].mapHigh;
            row.keyRoot = note;
            row.velocityLow = msl.range_start;
            row.velocityHigh = msl.range_end;
            row.keyLoopEnabled = msl.keys[note].loopMode != 0;

            std::string section = sampleTemplate_;
            fillSampleValues(section, row);
            removeOpenVelocityBounds(section, row.velocityLow, row.velocityHigh);
            sampleSections_ += section;
            rows_.push_back(row);
        }
    }
    return 1;
}

void TemplateExporter::fillMainValues(std::string&) const {}

int TemplateExporter::writeDescription(const std::string& path, std::string& message)
{
    output_ = mainTemplate_;
    fillTextValue(output_, "name", project_->name);
    fillTextValue(output_, "generator", "Tonegrabber 6");
    fillUserText(output_, "category", category_);
    fillUserText(output_, "creator", creator_);
    std::string keywords;
    for (const std::string& keyword : keywords_) {
        std::string line = "      <keyword>###keyword###</keyword>\n";
        fillUserText(line, "keyword", keyword);
        keywords += line;
    }
    fillMainValues(output_);
    fillBytes(output_, "keywordsSection", keywords);
    // The sections go in last so that no value inside them is taken for a placeholder.
    fillBytes(output_, "sampleSection", sampleSections_);
    std::string error;
    if (!writeWholeFile(path, output_, error))
        return setMessage(message, "%s%s", prefix().c_str(), error.c_str());
    return 1;
}

} // namespace tg
