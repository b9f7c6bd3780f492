// Deluge, Prophet-X and Quantum exports: folders, file names, values and refusals.
#include "export/templates/DelugeExporter.h"
#include "export/templates/ProphetXExporter.h"
#include "export/templates/QuantumExporter.h"

#include "export/tests/SyntheticProject.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

namespace tg {
namespace {

namespace fs = std::filesystem;
using test::addKey;
using test::addLayer;

// A Project "Organ" of two velocity layers with keys 57 (looped) and 69 (one-shot) in each,
// a card folder and a source of synthetic audio.
class CardExport : public ::testing::Test {
  protected:
    void SetUp() override
    {
        const int soft = addLayer(*project, "Soft", 0, 63, 48, 72);
        const int loud = addLayer(*project, "Loud", 64, 127, 48, 72);
        for (int layer : {soft, loud}) {
            addKey(*project, layer, 57, 48, 62, 1);
            addKey(*project, layer, 69, 63, 72, 0);
        }
    }

    std::unique_ptr<Project> project = test::makeProject("Organ");
    test::TempDir root;
    test::SyntheticSource source;
    std::string message;
};

std::vector<std::vector<std::string>> tabRows(const std::string& text)
{
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::vector<std::string> cells;
        std::istringstream fields(line);
        for (std::string cell; std::getline(fields, cell, '\t');)
            cells.push_back(cell);
        rows.push_back(cells);
    }
    return rows;
}

TEST_F(CardExport, QuantumMapLinesHoldNormalisedLoopsAndTheSamplesLieWhereTheyPoint)
{
    source.loopedNotes[57] = true; // 1000 frames, loop 250..990
    QuantumExporter exporter(*project, {0, 1}, root.path(), 0x20408, "OrganSet", "Organ");
    exporter.setLoopAllSamples(true);
    ASSERT_EQ(exporter.exportStep(source, test::wavFileWriter(), message), 1) << message;

    const std::string map = test::readFileBytes(root.path() + "/samples/OrganSet/Organ.map");
    EXPECT_EQ(map.find("%%"), std::string::npos) << "template notes leaked into the map";
    const auto rows = tabRows(map);
    ASSERT_EQ(rows.size(), 4u) << map;
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 16u);
        const std::string file = row[0].substr(3, row[0].size() - 4); // "2:...": drop 2: and quotes
        EXPECT_TRUE(fs::exists(root.path() + "/" + file)) << file;
        EXPECT_EQ(row[10], "1"); // loop all samples
    }
    // File, root, keys, velocities and the loop; a Key-Sample without a loop spans the file.
    const auto filled = [&rows](size_t row) {
        std::string cells;
        for (size_t cell : {0, 1, 2, 3, 5, 6, 11, 12})
            cells += rows[row][cell] + " ";
        return cells;
    };
    EXPECT_EQ(filled(0), "\"2:samples/OrganSet/Key-00-057.wav\" 57.00000000 48 62 0 63 0.25000000 "
                         "0.99000000 ");
    EXPECT_EQ(filled(3), "\"2:samples/OrganSet/Key-01-069.wav\" 69.00000000 63 72 64 127 "
                         "0.00000000 1.00000000 ");
}

TEST_F(CardExport, DelugeTakesOnlyTheSelectedLayerToTheCardFoldersAndLoopsAllOnRequest)
{
    source.loopedNotes[57] = true;
    DelugeExporter exporter(*project, {1, 0}, root.path(), 0x20408, "ORGAN");
    ASSERT_EQ(exporter.exportStep(source, test::wavFileWriter(), message), 1) << message;

    const std::string folder = root.path() + "/SAMPLES/TNGB/ORGAN";
    EXPECT_TRUE(fs::exists(folder + "/Key057.wav"));
    EXPECT_TRUE(fs::exists(folder + "/Key069.wav"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 2);
    for (const auto& request : source.requests)
        EXPECT_EQ(std::get<0>(request), 1) << "a layer other than the selected one was rendered";

    const std::string xml = test::readFileBytes(root.path() + "/SYNTHS/ORGAN.XML");
    ASSERT_FALSE(xml.empty());
    EXPECT_NE(xml.find("fileName=\"SAMPLES/TNGB/ORGAN/Key057.wav\""), std::string::npos);
    EXPECT_NE(xml.find("rangeTopNote=\"62\""), std::string::npos);
    EXPECT_NE(xml.find("transpose=\"3\""), std::string::npos);  // 60 - 57
    EXPECT_NE(xml.find("transpose=\"-9\""), std::string::npos); // 60 - 69
    EXPECT_NE(xml.find("endSamplePos=\"1000\""), std::string::npos);
    EXPECT_NE(xml.find("startLoopPos=\"250\""), std::string::npos);
    EXPECT_NE(xml.find("loopMode=\"0\""), std::string::npos);
    if (test::haveProgram("xmllint")) {
        EXPECT_EQ(test::runCommand("xmllint --noout '" + root.path() + "/SYNTHS/ORGAN.XML'"), 0);
    }

    DelugeExporter loopAll(*project, {0}, root.path(), 0x20408, "LOOPED");
    loopAll.setLoopAllSamples(true);
    ASSERT_EQ(loopAll.exportStep(source, test::wavFileWriter(), message), 1) << message;
    EXPECT_NE(loopAll.output().find("loopMode=\"2\""), std::string::npos);
}

TEST_F(CardExport, ProphetXZipLandsInBankAndCategoryWithRootFrequencies)
{
    ProphetXExporter exporter(*project, {0, 1}, root.path(), 0x20410,
                              {"UserBank1", "Keys", 3, "Organ"});
    ASSERT_EQ(exporter.exportStep(source, test::wavFileWriter(), message), 1) << message;
    ASSERT_EQ(exporter.finishStep(message), 1) << message;

    const std::string zip = root.path() + "/px/UserBank1/Keys/03. Organ.zip";
    EXPECT_EQ(exporter.zipPath(), zip);
    ASSERT_TRUE(fs::exists(zip));
    if (test::haveProgram("unzip")) {
        std::string listing;
        EXPECT_EQ(test::runCommand("unzip -t '" + zip + "'", &listing), 0) << listing;
        EXPECT_NE(listing.find("03. Organ.grp"), std::string::npos) << listing;
        EXPECT_NE(listing.find("Key-01-069.wav"), std::string::npos) << listing;
    }
    const std::string& text = exporter.output();
    EXPECT_NE(text.find("pitchHertz=220.00\n"), std::string::npos) << text; // root 57
    EXPECT_NE(text.find("pitchHertz=440.00\n"), std::string::npos) << text; // root 69
    EXPECT_EQ(pitchHertzText(60), "261.63");
}

TEST_F(CardExport, ProphetXTakenProgramNumberIsRefusedBeforeAnythingIsRendered)
{
    fs::create_directories(root.path() + "/px/UserBank1/Keys");
    test::writeFileBytes(root.path() + "/px/UserBank1/Keys/03. Strings.zip", "x");
    ProphetXExporter exporter(*project, {0, 1}, root.path(), 0x20410,
                              {"UserBank1", "Keys", 3, "Organ"});
    EXPECT_EQ(exporter.exportStep(source, test::wavFileWriter(), message), 0);
    EXPECT_EQ(message,
              "A program with the same number (03) already exists in this user-bank/category.");
    EXPECT_TRUE(source.requests.empty());
    EXPECT_TRUE(exporter.temporaryFolder().empty());

    ProphetXExporter other(*project, {0, 1}, root.path(), 0x20410,
                           {"UserBank1", "Keys", 4, "Organ"});
    EXPECT_EQ(other.exportStep(source, test::wavFileWriter(), message), 1) << message;
}

TEST_F(CardExport, MissingTemplatesAreReportedWithTheirPaths)
{
    const fs::path previous = fs::current_path();
    fs::current_path(root.path()); // no Resources folder here or beside the test binary
    QuantumExporter exporter(*project, {0}, root.path(), 0x20408, "A", "B");
    fs::current_path(previous);
    if (exporter.exportStep(source, test::wavFileWriter(), message) == 1)
        GTEST_SKIP() << "an installed Resources folder was found";
    EXPECT_EQ(message.rfind("QuantumExporter:\n\nunable to read the templates", 0), 0u) << message;
    EXPECT_NE(message.find("QuantumTemplate_Main.map"), std::string::npos);
}

} // namespace
} // namespace tg
