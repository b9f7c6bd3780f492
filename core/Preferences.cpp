// The preferences file layout, written and read through one field list so that the two
// directions cannot drift apart.
#include "core/Preferences.h"

#include "core/AtomicFile.h"
#include "core/LittleEndian.h"
#include "core/Message.h"
#include "core/Paths.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

namespace tg {

namespace {

// Calls the visitor once per field with its file offset. The visitor has value(offset, field)
// for the number types and text(offset, buffer, bufferSize, storedSize) for character fields.
template <typename Prefs, typename Visitor> void visitFields(Prefs& p, Visitor& v)
{
    for (size_t i = 0; i < sizeof p.open0; ++i)
        v.value(0 + i, p.open0[i]);
    v.text(16, p.datapath, sizeof p.datapath, kPathSize);
    v.text(276, p.MIDIoutDevice, sizeof p.MIDIoutDevice, kMidiOutDeviceSize);
    v.value(312, p.MIDIoutChannel);
    v.value(314, p.AutoSendReset);
    v.value(316, p.MIDIoutProgram_active);
    v.value(318, p.MIDIoutProgram);
    v.value(320, p.MIDIoutAttackVelocity);
    v.value(322, p.MIDIoutReleaseVelocity);
    v.value(324, p.MIDIoutAfterTouch);
    v.text(326, p.AudioInDevice, sizeof p.AudioInDevice, kAudioInDeviceSize);
    v.text(394, p.AudioInFormat, sizeof p.AudioInFormat, kAudioInFormatSize);

    auto& rs = p.recordsettings;
    v.value(432, rs.notelength1);
    v.value(440, rs.notelength2_active);
    v.value(448, rs.notelength2);
    v.value(456, rs.releaselength1);
    v.value(464, rs.releaselength2_active);
    v.value(472, rs.releaselength2);
    v.value(480, rs.clickpopred);
    v.value(481, rs.zerocrossing);
    v.value(484, rs.latency);
    v.value(488, rs.thresPrecisionIn);
    v.value(496, rs.thresPrecisionOut);
    v.value(504, rs.recpause);
    v.value(512, rs.autoloop);
    v.value(513, rs.autogain);
    v.value(520, rs.loopsearchlength);
    v.value(528, rs.loopstart);
    v.value(536, rs.loopoutsearchstart);
    v.value(544, rs.xfadelength);
    v.text(552, rs.xfadetype, sizeof rs.xfadetype, kCurveNameSize);
    v.value(568, rs.bfxfadelength);
    v.text(576, rs.bfxfadetype, sizeof rs.bfxfadetype, kCurveNameSize);

    v.value(592, p.open592);
    v.value(630, p.open630);
    v.value(708, p.open708);
    v.value(712, p.open712);
    v.text(726, p.SampleEditor, sizeof p.SampleEditor, kPrefsFolderSize);
    v.value(1242, p.open1242[0]);
    v.value(1244, p.open1242[1]);
    v.value(1250, p.open1250);
    v.text(1252, p.TempDir, sizeof p.TempDir, kPrefsFolderSize);
    v.value(1768, p.promptWhenDeleting);
    v.value(1770, p.showPrjWizardAtStartup);
    v.value(5384, p.open5384);
    v.value(5386, p.ClickPopRedFade_in);
    v.value(5388, p.ClickPopRedFade_out);
    v.value(5390, p.loadPrjAtStartup);
    for (size_t i = 0; i < 4; ++i)
        v.value(5392 + 4 * i, p.open5392[i]);
    for (size_t i = 0; i < 8; ++i)
        v.value(5408 + 2 * i, p.open5408[i]);
    for (size_t i = 0; i < 2; ++i)
        v.value(5424 + 8 * i, p.open5424[i]);
    v.value(5440, p.open5440);
    v.text(5448, p.instrumentName, sizeof p.instrumentName, kNameSize);
    v.text(5496, p.secondPath, sizeof p.secondPath, kPathSize);
    for (size_t i = 0; i < 4; ++i)
        v.value(5756 + 4 * i, p.open5756[i]);
    for (size_t i = 0; i < 4; ++i)
        v.value(5772 + 4 * i, p.open5772[i]);
    v.value(5788, p.open5788);
    for (size_t i = 0; i < 2; ++i)
        v.value(5792 + 8 * i, p.open5792[i]);
    for (size_t i = 0; i < 2; ++i)
        v.value(5808 + 4 * i, p.open5808[i]);
    v.value(5816, p.open5816);
    for (size_t i = 0; i < 2; ++i)
        v.value(5824 + 2 * i, p.open5824[i]);
}

struct FieldWriter {
    std::vector<uint8_t>& out;

    template <typename T> void value(size_t offset, const T& field)
    {
        putLE(out.data(), out.size(), offset, field);
    }
    // The whole stored field is written, bytes after the terminator included, so that a
    // record read from a file writes back the same bytes.
    void text(size_t offset, const char* buffer, size_t, size_t storedSize)
    {
        if (fieldFits(out.size(), offset, storedSize))
            std::memcpy(out.data() + offset, buffer, storedSize);
    }
};

struct FieldReader {
    const uint8_t* data;
    size_t size;

    template <typename T> void value(size_t offset, T& field) { getLE(data, size, offset, field); }
    // A stored text may fill its field without a terminator: the in-memory buffer is either
    // one byte larger (device and curve names) or the last byte is forced to NUL.
    void text(size_t offset, char* buffer, size_t bufferSize, size_t storedSize)
    {
        if (!fieldFits(size, offset, storedSize) || bufferSize < storedSize)
            return;
        std::memcpy(buffer, data + offset, storedSize);
        if (bufferSize > storedSize)
            std::memset(buffer + storedSize, 0, bufferSize - storedSize);
        else
            buffer[bufferSize - 1] = '\0';
    }
};

} // namespace

Preferences defaultPreferences()
{
    Preferences prefs;
    const std::string dataFolder = joinPath(userDataFolder(), "Data");
    copyText(prefs.datapath, dataFolder.c_str());
    copyText(prefs.secondPath, dataFolder.c_str());
    return prefs;
}

std::vector<uint8_t> serializePreferences(const Preferences& prefs)
{
    std::vector<uint8_t> out(prefs.keptBytes.begin(), prefs.keptBytes.end());
    FieldWriter writer{out};
    visitFields(prefs, writer);
    return out;
}

bool parsePreferences(const uint8_t* data, size_t size, Preferences& prefs)
{
    if (data == nullptr || size != kPreferencesFileSize)
        return false;
    FieldReader reader{data, size};
    visitFields(prefs, reader);
    std::copy(data, data + size, prefs.keptBytes.begin());
    return true;
}

std::string preferencesFilePath()
{
    return joinPath(userDataFolder(), "Tonegrabber.prefs");
}

void loadPreferences(Preferences& prefs)
{
    prefs = defaultPreferences();
    std::ifstream file(preferencesFilePath(), std::ios::binary);
    if (!file)
        return;
    file.seekg(0, std::ios::end);
    const std::streamoff length = file.tellg();
    if (length != static_cast<std::streamoff>(kPreferencesFileSize))
        return;
    file.seekg(0, std::ios::beg);
    std::vector<uint8_t> image(kPreferencesFileSize);
    if (!file.read(reinterpret_cast<char*>(image.data()),
                   static_cast<std::streamsize>(image.size())))
        return;
    parsePreferences(image.data(), image.size(), prefs);
}

bool savePreferences(const Preferences& prefs)
{
    const std::vector<uint8_t> image = serializePreferences(prefs);
    return replaceFileContents(preferencesFilePath(), image.data(), image.size());
}

PreferencesSnapshot takePreferencesSnapshot(const Preferences& prefs)
{
    return serializePreferences(prefs);
}

void restorePreferencesSnapshot(Preferences& prefs, const PreferencesSnapshot& snapshot)
{
    parsePreferences(snapshot.data(), snapshot.size(), prefs);
}

} // namespace tg
