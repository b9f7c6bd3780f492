// In-memory audio services for export tests: 16-bit recordings keyed by path, a renderer
// that copies the note (and, when the key's release is on, a short release part), an
// identity converter and writers that keep what they were given.
#pragma once

#include "core/Message.h"
#include "export/ExportServices.h"
#include "export/KeySampleFile.h"
#include "tests/support/Pcm16.h"

#include <map>
#include <string>

namespace tg::test {

struct WrittenFile {
    WaveFormat format;
    std::vector<uint8_t> data;
    SampleLoop loop;
    int rootKey = -1;
    SampleInstrument instrument;
    std::string name;
};

// 16-bit mono recordings held in memory, keyed by their file path.
struct MemoryAudio {
    std::map<std::string, WrittenFile> written;
    std::string failWritesTo; // a writer call for a path containing this fails
    std::map<std::string, KeyAudio> files;

    void add(const Project& p, int m, int note, int frames, int16_t peak)
    {
        KeyAudio audio;
        audio.format = makeWaveFormat(44100, 1, 16);
        audio.data = pcm16(size_t(frames), 1, [&](size_t i, int) {
            return i == size_t(frames) / 2 ? peak : int16_t(i % 7);
        });
        files[keySampleFilePath(p, p.msl[m], note)] = audio;
    }

    ExportServices services()
    {
        ExportServices s;
        s.readKeySample = [this](const std::string& path, KeyAudio& audio, std::string& message) {
            auto it = files.find(path);
            if (it == files.end())
                return setMessage(message, "unable to open %s", path.c_str());
            audio = it->second;
            return 1;
        };
        // Copies Note_In..Note_Out; the loop is reported relative to Note_In.
        s.render = [](const TGmsl_key& key, const KeyAudio& audio, RenderedKey& out,
                      std::string& message) {
            if (key.Note_Out < key.Note_In || size_t(key.Note_Out) * 2 + 2 > audio.data.size())
                return setMessage(message, "the note's length is equal 0");
            out.format = audio.format;
            out.note.assign(audio.data.begin() + key.Note_In * 2,
                            audio.data.begin() + key.Note_Out * 2 + 2);
            out.loopStart = key.Loop_In - key.Note_In;
            out.loopEnd = key.Loop_Out - key.Note_In;
            out.release.clear();
            if (key.releaseOn != 0)
                out.release.assign(audio.data.end() - 64, audio.data.end());
            return 1;
        };
        s.convert = [](std::vector<uint8_t>&, const WaveFormat& from, const WaveFormat& to,
                       int32_t*, int32_t*, ChannelMode, ResampleMode, std::string& message) {
            if (from.nSamplesPerSec != to.nSamplesPerSec || from.nChannels != to.nChannels ||
                from.wBitsPerSample != to.wBitsPerSample)
                return setMessage(message, "convert sample error: unsupported in this test");
            return 1;
        };
        s.peakLevel = [](const KeyAudio& audio) { return pcm16Peak(audio.data) / 32767.0; };
        s.writeWav = [this](const std::string& path, const WaveFormat& format,
                            const std::vector<uint8_t>& data, const SampleLoop& loop, int rootKey,
                            std::string& message) {
            if (!failWritesTo.empty() && path.find(failWritesTo) != std::string::npos)
                return setMessage(message, "unable to open %s", path.c_str());
            written[path] = {format, data, loop, rootKey, {}, {}};
            return 1;
        };
        s.writeAiff = [this](const std::string& path, const WaveFormat& format,
                             const std::vector<uint8_t>& data, const SampleLoop& loop,
                             const SampleInstrument& instrument, const std::string& name,
                             std::string& message) {
            if (!failWritesTo.empty() && path.find(failWritesTo) != std::string::npos)
                return setMessage(message, "unable to open %s", path.c_str());
            written[path] = {format, data, loop, instrument.rootKey, instrument, name};
            return 1;
        };
        return s;
    }
};

} // namespace tg::test
