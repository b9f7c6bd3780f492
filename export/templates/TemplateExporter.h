// The exporters that fill text templates: BaseExporter and TemplateExporter.
#pragma once

#include "core/Records.h"
#include "export/templates/RenderedSample.h"
#include "export/zip/ZipArchive.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// The shared state of an exporter object: what to export, where, and how.
class BaseExporter {
  public:
    BaseExporter(const Project& project, std::vector<int> selection, std::string destination,
                 uint32_t settings);
    virtual ~BaseExporter();
    BaseExporter(const BaseExporter&) = delete;
    BaseExporter& operator=(const BaseExporter&) = delete;

    // Renders the WAV files, fills the templates and writes the description.
    // Returns 1, or 0 with `message` (prefixed by the exporter's name line).
    virtual int exportStep(KeySampleSource& source, const WavFileWriter& writeWav,
                           std::string& message) = 0;
    // Whatever comes after the description (compressing, for the zipped formats).
    // Returns 1, or 0 with `message`.
    virtual int finishStep(std::string& message);

    void setProgress(ProgressFunction progress) { progress_ = std::move(progress); }
    void setAbortFlag(const std::atomic<bool>* abortFlag) { abortFlag_ = abortFlag; }

  protected:
    const Project* project_;     // not owned
    std::vector<int> selection_; // Multi-Sample indices in export order
    std::string destination_;    // a file path (Bitwig) or the root folder of a card or drive
    uint32_t settings_;          // the Export Settings word
    ProgressFunction progress_;
    const std::atomic<bool>* abortFlag_ = nullptr;
};

// The values of one exported Key-Sample from which each format fills its per-sample template.
struct SampleRow {
    int mslIndex = 0;         // index into Project::msl
    int ordinal = 0;          // place in the selection, from 0
    int note = 0;             // MIDI note of the slot, 0..127
    std::string fileName;     // the "fileName" value (as the target refers to the file)
    int32_t frames = 0;       // frames of the written file
    bool fileHasLoop = false; // the written file carries a loop
    int32_t loopStart = 0;    // frames; 0 without a loop
    int32_t loopEnd = 0;      // frames, inclusive; the frame count without a loop
    int keyLow = 0;           // zone, 0..127
    int keyHigh = 0;          // zone, 0..127
    int keyRoot = 60;         // MIDI note the file sounds at
    int velocityLow = 0;      // layer velocity range, 0..127
    int velocityHigh = 127;
    bool keyLoopEnabled = false; // the Key-Sample's own loop switch
};

// Fills a main and a per-sample template read from the Resources folder.
class TemplateExporter : public BaseExporter {
  public:
    // "Loop all Samples (use Loop points if available)".
    void setLoopAllSamples(bool loopAll) { loopAll_ = loopAll; }
    // User texts; each is used up to its first 24 characters.
    void setCategory(std::string category) { category_ = std::move(category); }
    void setCreator(std::string creator) { creator_ = std::move(creator); }
    void setKeywords(std::vector<std::string> keywords) { keywords_ = std::move(keywords); }

    // The filled main description and the concatenated per-sample sections.
    const std::string& output() const { return output_; }
    const std::string& sampleSections() const { return sampleSections_; }
    const std::vector<SampleRow>& rows() const { return rows_; }

  protected:
    // Reads "Resources/<mainFile>" and "Resources/<sampleFile>". A template that cannot be read
    // is reported by the export step.
    TemplateExporter(const Project& project, std::vector<int> selection, std::string destination,
                     uint32_t settings, const char* nameLine, const char* mainFile,
                     const char* sampleFile);

    // Fails with the name line and the template's path when a template is missing.
    int checkTemplates(std::string& message) const;
    // Renders the exported keys of the Multi-Samples at `ordinals` (places in the selection)
    // into `folder`, naming each file by `nameTemplate` + ".wav", and appends one filled
    // per-sample section per key.
    int renderLayers(const std::vector<int>& ordinals, KeySampleSource& source,
                     const WavFileWriter& writeWav, const std::string& folder,
                     const std::string& nameTemplate, std::string& message);
    // Fills the main template into output_ and writes it to `path`.
    int writeDescription(const std::string& path, std::string& message);
    // Fills a text value: Latin-1, escaped when the format is XML.
    void fillTextValue(std::string& text, const std::string& key, const std::string& value) const;
    // Fills what every format's sample section says the same way: the file name, the key and
    // velocity ranges, the root key, and no gain or tuning of its own.
    void fillZoneValues(std::string& section, const SampleRow& row) const;
    // Fills a user text (category, creator, keyword): Latin-1, its first 24 characters.
    void fillUserText(std::string& text, const std::string& key, const std::string& value) const;
    // The message prefix: the exporter's name line and a blank line.
    std::string prefix() const { return nameLine_ + ":\n\n"; }

    // The "fileName" value of a file written with base name `baseName`.
    virtual std::string fileNameValue(const std::string& baseName) const = 0;
    // Fills one per-sample section.
    virtual void fillSampleValues(std::string& section, const SampleRow& row) const = 0;
    // Format values of the main template beyond the shared ones.
    virtual void fillMainValues(std::string& text) const;
    virtual bool isXml() const { return true; }

    bool loopAll_ = false;
    std::string category_;
    std::string creator_;
    std::vector<std::string> keywords_;
    std::string nameLine_;
    std::string mainPath_;
    std::string samplePath_;
    std::string mainTemplate_;
    std::string sampleTemplate_;
    bool templatesRead_ = false;
    std::string output_;
    std::string sampleSections_;
    std::vector<SampleRow> rows_;
};

// Reads a template file; lines at its start that begin with "%%" are notes for whoever edits
// the template and are dropped. Returns 1, or 0 when the file cannot be read.
int readTemplateFile(const std::string& path, std::string& text);

// Writes `bytes` to `path`, whole or not at all (a file already there stays as it was when
// the write fails). Returns 1, or 0 with "unable to open \"%s\"" or
// "unable to write \"%s\"".
int writeWholeFile(const std::string& path, const std::string& bytes, std::string& message);

} // namespace tg
