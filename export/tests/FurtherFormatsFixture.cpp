// The recorded test Project, its WAV files read back, and an XML attribute scanner.
#include "export/tests/FurtherFormatsFixture.h"

#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "export/ExportAudioServices.h"
#include "export/KeyRangeMapping.h"
#include "tests/support/Pcm16.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <regex>

namespace tg::test {
namespace {

constexpr int kFrames = 12000;

std::vector<uint8_t> tone(int channels, int note)
{
    return pcm16(kFrames, channels, [note](size_t i, int c) {
        return int16_t(9000 * std::sin(0.0021 * note * double(i) * (c + 1)) + c * 7);
    });
}

} // namespace

RecordedProject::RecordedProject()
{
    out = dir.file("out");
    std::filesystem::create_directories(out);
    std::filesystem::create_directories(dir.file("data"));
    copyText(project->name, "Strings");
    copyText(project->dataPath, dir.file("data").c_str());
    project->mslCount = 2;
    for (int m = 0; m < 2; ++m) {
        TGmsl& msl = project->msl[m];
        copyText(msl.name, m == 0 ? "Soft" : "Loud");
        msl.range_start = m == 0 ? 1 : 65;
        msl.range_end = m == 0 ? 64 : 127;
        msl.KBrangeIn = 48;
        msl.KBrangeOut = 72;
        for (int note : {60, 67}) {
            TGmsl_key& key = msl.keys[note];
            key = makeNewKey(note);
            key.keyState = 1;
            key.hasAudio = 1;
            key.Note_In = 300;
            key.Note_Out = 11000;
            key.loopMode = (m == 1 && note == 67) ? 0 : 1;
            key.Loop_In = 3000 + note;
            key.Loop_Out = 8000 + note;
            key.xfadeLen = 250;
            key.releaseOn = (m == 0 && note == 60) ? 1 : 0;
            std::string text;
            const int channels = m + 1;
            EXPECT_EQ(writeWav(keySampleFileName(*project, msl, note),
                               makeWaveFormat(44100, uint16_t(channels), 16), tone(channels, note),
                               text),
                      1)
                << text;
        }
    }

    services = defaultExportServices();
    const auto render = services.render;
    services.render = [this, render](const TGmsl_key& key, const KeyAudio& audio,
                                     RenderedKey& result, std::string& message) {
        if (!render(key, audio, result, message))
            return 0;
        // The program's renderer gives no release part; this one does for keys that have
        // "Release ON", so that release zones are exported too.
        if (key.releaseOn != 0)
            result.release.assign(result.note.end() - 400, result.note.end());
        for (int m = 0; m < project->mslCount; ++m)
            for (int n = 0; n < kKeyCount; ++n)
                if (&project->msl[m].keys[n] == &key) {
                    const std::lock_guard<std::mutex> hold(renderedLock);
                    rendered[{m, n}] = result;
                }
        return 1;
    };
}

std::map<std::pair<int, int>, std::pair<int, int>> RecordedProject::zones() const
{
    auto mapped = std::make_unique<Project>(*project);
    Project& copy = *mapped;
    mapKeyRanges(copy, -1);
    std::map<std::pair<int, int>, std::pair<int, int>> result;
    for (int m = 0; m < copy.mslCount; ++m)
        for (int n = 0; n < kKeyCount; ++n)
            if (copy.msl[m].keys[n].keyState != 0)
                result[{m, n}] = {copy.msl[m].keys[n].mapLow, copy.msl[m].keys[n].mapHigh};
    return result;
}

WavImage readWavImage(const std::string& path)
{
    WavImage image;
    std::string message;
    image.ok = readWav(path, image.format, image.data, message) == 1;
    EXPECT_TRUE(image.ok) << message;
    return image;
}

std::vector<std::map<std::string, std::string>> xmlElements(const std::string& xml,
                                                            const std::string& element)
{
    std::vector<std::map<std::string, std::string>> found;
    const std::regex tag("<" + element + "((?:\\s+[A-Za-z_][\\w.-]*=\"[^\"]*\")*)\\s*/?>");
    const std::regex attribute("([A-Za-z_][\\w.-]*)=\"([^\"]*)\"");
    for (auto it = std::sregex_iterator(xml.begin(), xml.end(), tag); it != std::sregex_iterator();
         ++it) {
        std::map<std::string, std::string> attributes;
        const std::string list = (*it)[1];
        for (auto a = std::sregex_iterator(list.begin(), list.end(), attribute);
             a != std::sregex_iterator(); ++a)
            attributes[(*a)[1]] = (*a)[2];
        found.push_back(attributes);
    }
    return found;
}

} // namespace tg::test
