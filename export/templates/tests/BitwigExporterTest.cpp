// The Bitwig .multisample: XML accepted by xmllint, the published layout, abort and failure.
#include "export/templates/BitwigExporter.h"

#include "export/tests/SyntheticProject.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

namespace tg {
namespace {

using test::addKey;
using test::addLayer;

struct BitwigRun {
    std::unique_ptr<Project> project = test::makeProject("Piano & Co");
    test::TempDir dir;
    test::SyntheticSource source;
    std::string zipPath;
    std::string xml;
    std::string listing;

    BitwigRun()
    {
        const int soft = addLayer(*project, "Soft", 0, 63, 36, 84);
        const int loud = addLayer(*project, "Loud", 64, 127, 36, 84);
        for (int layer : {soft, loud}) {
            addKey(*project, layer, 48, 36, 53, 1);
            addKey(*project, layer, 60, 54, 66, 0);
            addKey(*project, layer, 72, 67, 84, 1);
        }
        addKey(*project, soft, 90, 90, 90); // outside the key range: not exported
        source.loopedNotes[48] = true;
        source.loopedNotes[72] = true;
        zipPath = dir.file("out/Piano.multisample");
    }

    void run(const std::vector<int>& selection)
    {
        BitwigExporter exporter(*project, selection, zipPath, 0x20408);
        exporter.setCategory("A category that is longer than twenty-four");
        exporter.setCreator("Tester");
        exporter.setKeywords({"warm", "a keyword that is far too long to keep"});
        std::string message;
        ASSERT_EQ(exporter.exportStep(source, test::wavFileWriter(), message), 1) << message;
        ASSERT_EQ(exporter.finishStep(message), 1) << message;
        const std::string extracted = dir.file("x");
        ASSERT_EQ(test::runCommand("unzip -q -o '" + zipPath + "' -d '" + extracted + "'"), 0);
        xml = test::readFileBytes(extracted + "/multisample.xml");
        test::runCommand("unzip -Z1 '" + zipPath + "'", &listing);
    }
};

std::vector<std::string> sampleElements(const std::string& xml)
{
    std::vector<std::string> out;
    const std::regex element("<sample [^>]*>[\\s\\S]*?</sample>");
    for (auto it = std::sregex_iterator(xml.begin(), xml.end(), element);
         it != std::sregex_iterator(); ++it)
        out.push_back(it->str());
    return out;
}

// The value of the first attribute `name` in `text`, with "&amp;", the only entity the names
// here need, decoded (the other escapes: TemplateText).
std::string attribute(const std::string& text, const std::string& name)
{
    std::smatch match;
    const std::regex pattern("[ <]" + name + "=\"([^\"]*)\"");
    if (!std::regex_search(text, match, pattern))
        return "<absent>";
    std::string value = match[1].str();
    for (size_t at = 0; (at = value.find("&amp;", at)) != std::string::npos; ++at)
        value.replace(at, 5, "&");
    return value;
}

TEST(BitwigExporter, OneSampleElementPerKeySampleInPublishedOrderAndEveryFileArchived)
{
    // A valid, deflated archive is ZipArchiveTest's business; the XML must pass xmllint.
    if (!test::haveProgram("unzip") || !test::haveProgram("xmllint"))
        GTEST_SKIP() << "unzip or xmllint not installed";
    BitwigRun run;
    run.run({0, 1});
    std::string output;
    EXPECT_EQ(
        test::runCommand("xmllint --noout '" + run.dir.file("x/multisample.xml") + "'", &output), 0)
        << output;
    ASSERT_NE(run.xml.find("<multisample name=\"Piano &amp; Co\">"), std::string::npos);
    const size_t generator = run.xml.find("<generator>Tonegrabber 6</generator>");
    const size_t category = run.xml.find("<category>A category that is longe</category>");
    const size_t creator = run.xml.find("<creator>Tester</creator>");
    const size_t description = run.xml.find("<description>");
    const size_t keywords = run.xml.find("<keywords>");
    ASSERT_NE(category, std::string::npos) << run.xml;
    EXPECT_TRUE(generator < category && category < creator && creator < description &&
                description < keywords);
    EXPECT_NE(run.xml.find("<keyword>warm</keyword>"), std::string::npos);
    EXPECT_NE(run.xml.find("<keyword>a keyword that is far to</keyword>"), std::string::npos);

    const std::vector<std::string> samples = sampleElements(run.xml);
    ASSERT_EQ(samples.size(), 6u);
    for (const std::string& sample : samples) {
        const size_t key = sample.find("<key ");
        const size_t velocity = sample.find("<velocity");
        const size_t select = sample.find("<select/>");
        const size_t loop = sample.find("<loop ");
        EXPECT_TRUE(key < velocity && velocity < select && select < loop) << sample;
        const std::string file = attribute(sample, "file");
        EXPECT_NE(run.listing.find(file + "\n"), std::string::npos) << file << " not in archive";
    }
    // First sample: layer "Soft", key 48 with its loop, its layer open below only (a layer
    // open both ways: TemplateText).
    const std::string& first = samples[0];
    EXPECT_EQ(attribute(first, "file"), "Piano & Co-00-Soft-048-Key-C3.wav");
    EXPECT_EQ(attribute(first, "sample-stop"), "1000.00000000");
    EXPECT_EQ(attribute(first, "root"), "48");
    EXPECT_EQ(attribute(first, "low"), "36");
    EXPECT_EQ(attribute(first, "high"), "53");
    EXPECT_EQ(attribute(first, "mode"), "sustain");
    EXPECT_EQ(attribute(first, "start"), "250.00000000");
    EXPECT_EQ(attribute(first, "stop"), "990.00000000");
    EXPECT_NE(samples[0].find("<velocity high=\"63\"/>"), std::string::npos) << samples[0];
    EXPECT_NE(samples[3].find("<velocity low=\"64\"/>"), std::string::npos) << samples[3];
    EXPECT_EQ(attribute(samples[1], "mode"), "off");
    EXPECT_EQ(attribute(samples[1], "stop"), "1000.00000000");
    EXPECT_NE(run.listing.find("multisample.xml\n"), std::string::npos);
}

TEST(BitwigExporter, TemporaryFolderGoesWithTheExporterAndAbortLeavesNoArchive)
{
    BitwigRun run;
    std::string temporary;
    std::atomic<bool> abort{false};
    {
        BitwigExporter exporter(*run.project, {0, 1}, run.zipPath, 0x20408);
        std::string message;
        ASSERT_EQ(exporter.exportStep(run.source, test::wavFileWriter(), message), 1) << message;
        temporary = exporter.temporaryFolder();
        EXPECT_TRUE(std::filesystem::exists(temporary + "/multisample.xml"));
        std::vector<double> fractions;
        exporter.setProgress([&](double fraction, const std::string& text) {
            EXPECT_EQ(text, "Compressing Bitwig multisample file.");
            fractions.push_back(fraction);
            abort = fractions.size() == 3;
        });
        exporter.setAbortFlag(&abort);
        EXPECT_EQ(exporter.finishStep(message), 0);
        EXPECT_EQ(message, "BitwigExporter:\n\nExport aborted.");
        EXPECT_EQ(fractions.size(), 3u);
    }
    EXPECT_FALSE(std::filesystem::exists(temporary));
    EXPECT_FALSE(std::filesystem::exists(run.zipPath));
}

TEST(BitwigExporter, RenderFailureEndsTheExportWithItsMessage)
{
    BitwigRun run;
    run.source.failAfterFirst = true;
    BitwigExporter exporter(*run.project, {0, 1}, run.zipPath, 0x20408);
    std::string message;
    EXPECT_EQ(exporter.exportStep(run.source, test::wavFileWriter(), message), 0);
    EXPECT_EQ(message, "BitwigExporter:\n\nExport aborted.");
}

} // namespace
} // namespace tg
