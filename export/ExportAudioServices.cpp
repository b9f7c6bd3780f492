// Adapters from the export's service shapes to the audio file functions. Loop ends are
// inclusive frames inside the export; the AIFF end marker sits after the last loop frame.
#include "export/ExportAudioServices.h"

#include "audiofile/AiffFile.h"
#include "audiofile/SampleConverter.h"
#include "audiofile/WavFile.h"
#include "core/Message.h"

#include <limits>

namespace tg {

void useAudioFileServices(ExportServices& services)
{
    services.readKeySample = [](const std::string& path, KeyAudio& audio, std::string& message) {
        return readWav(path, audio.format, audio.data, message);
    };
    services.convert = [](std::vector<uint8_t>& data, const WaveFormat& from, const WaveFormat& to,
                          int32_t* loopStart, int32_t* loopEnd, ChannelMode channels,
                          ResampleMode resampling, std::string& message) {
        WaveFormat source = from;
        WaveFormat destination = to;
        std::string reason;
        const int ok = convertSamples(data, source, destination, loopStart, loopEnd, channels,
                                      resampling, &reason);
        if (!ok)
            message = reason;
        return ok;
    };
    services.writeWav = [](const std::string& path, const WaveFormat& format,
                           const std::vector<uint8_t>& data, const SampleLoop& loop, int rootKey,
                           std::string& message) {
        WavLoopInfo info;
        info.rootKey = rootKey;
        info.loopStart = loop.start;
        info.loopEnd = loop.end;
        return writeWav(path, format, data, message, loop.enabled ? &info : nullptr);
    };
    services.writeAiff = [](const std::string& path, const WaveFormat& format,
                            const std::vector<uint8_t>& data, const SampleLoop& loop,
                            const SampleInstrument& instrument, const std::string& name,
                            std::string& message) {
        if (data.size() > size_t(std::numeric_limits<int32_t>::max()))
            return setMessage(message, "Error writing sound data to file (\"%s\")", path.c_str());
        AiffKeyRecord key;
        key.baseNote = instrument.rootKey;
        key.lowNote = instrument.lowKey;
        key.highNote = instrument.highKey;
        key.lowVelocity = instrument.lowVelocity;
        key.highVelocity = instrument.highVelocity;
        key.name = name;
        // Markers sit between frames: the end marker follows the last loop frame. Without a
        // loop both are 0, which writes no markers.
        const int32_t start = loop.enabled ? loop.start : 0;
        const int32_t end = loop.enabled ? loop.end + 1 : 0;
        return writeAiff(path, format, data.data(), int32_t(data.size()), start, end, key, message);
    };
}

} // namespace tg
