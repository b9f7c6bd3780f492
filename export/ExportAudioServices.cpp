// Adapters from the export's service shapes to the audio file functions. Loop ends are
// inclusive frames inside the export; the AIFF end marker sits after the last loop frame.
#include "export/ExportAudioServices.h"

#include "analysis/Renderer.h"
#include "audiofile/AiffFile.h"
#include "audiofile/SampleConverter.h"
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Model.h"
#include "export/KeyLevels.h"

#include <algorithm>

#include <limits>
#include <thread>

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

void useAnalysisServices(ExportServices& services)
{
    services.render = [](const TGmsl_key& key, const KeyAudio& audio, RenderedKey& out,
                         std::string& message) {
        RenderOptions options;
        // The export keeps the note after the loop; trimming decides how much of it.
        options.includeAfterLoop = true;
        const Preferences& prefs = Model::instance().preferences();
        options.clickPopFadeIn = prefs.ClickPopRedFade_in;
        options.clickPopFadeOut = prefs.ClickPopRedFade_out;
        const size_t bytes = audio.data.size();
        RenderedNote rendered;
        if (!renderKeySample(&key, &audio.format, audio.data.data(), &bytes, options, &rendered,
                             message))
            return 0;
        out.format = rendered.format;
        out.note = std::move(rendered.note);
        out.release = std::move(rendered.release);
        out.loopStart = rendered.loopStart;
        out.loopEnd = rendered.loopEnd;
        return 1;
    };
    services.peakLevel = [](const KeyAudio& audio) {
        return keyPeakLevel(audio.format, audio.data.data(), audio.data.size());
    };
}

ExportServices defaultExportServices()
{
    ExportServices services;
    useAudioFileServices(services);
    useAnalysisServices(services);
    // The reader, renderer, converter and level meter share no state between calls, so every
    // core may render a Key-Sample while the exporting thread writes.
    services.renderThreads = int(std::max(1u, std::thread::hardware_concurrency()));
    return services;
}

} // namespace tg
