// Rendering on request through the export session, and the WAV writer the format writers get.
#include "export/PipelineKeySource.h"

#include "core/Message.h"

namespace tg {

RenderedSample renderedSampleOf(const ExportedKey& key)
{
    RenderedSample sample;
    sample.format = key.audio.format;
    sample.audio = key.audio.note;
    sample.rootKey = key.note;
    sample.hasLoop = key.hasLoop && key.audio.loopEnd > key.audio.loopStart;
    sample.loopStart = sample.hasLoop ? key.audio.loopStart : 0;
    sample.loopEnd = sample.hasLoop ? key.audio.loopEnd : 0;
    return sample;
}

int PipelineKeySource::render(int mslIndex, int ordinal, int note, RenderedSample& sample,
                              std::string& message)
{
    const std::vector<int>& selection = session_.job().mslIndices;
    if (ordinal < 0 || size_t(ordinal) >= selection.size() ||
        selection[size_t(ordinal)] != mslIndex)
        return setMessage(message, "Multi-Sample %d is not selected at place %d", mslIndex,
                          ordinal);
    ExportedKey key;
    if (!session_.renderKey(ordinal, note, key, message))
        return 0;
    sample = renderedSampleOf(key);
    return 1;
}

WavFileWriter serviceWavWriter(const ExportServices& services)
{
    return [&services](const std::string& path, const RenderedSample& sample,
                       std::string& message) {
        if (!services.writeWav)
            return setMessage(message, "illegal pointer (==NULL)");
        SampleLoop loop;
        loop.enabled = sample.hasLoop;
        loop.start = sample.loopStart;
        loop.end = sample.loopEnd;
        return services.writeWav(path, sample.format, sample.audio, loop, sample.rootKey, message);
    };
}

} // namespace tg
