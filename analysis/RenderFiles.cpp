// Rendering a Key-Sample's WAV file into "%s.wav".
#include "analysis/Renderer.h"

#include "audiofile/WavFile.h"
#include "core/Message.h"

namespace tg {

int renderKeySampleToFiles(const Project* p, const TGmsl* m, const TGmsl_key* k,
                           const char* fname_in, const char* fname_out,
                           const RenderOptions& options, bool loopOnly, std::string& message)
{
    if (p == nullptr || m == nullptr || k == nullptr)
        return setMessage(message, "illegal pointers (p, m or k is equal NULL");
    if (fname_in == nullptr)
        return setMessage(message, "illegal pointer (fname_in==NULL)");
    if (fname_out == nullptr)
        return setMessage(message, "illegal pointer (fname_out==NULL)");

    WaveFormat format;
    std::vector<uint8_t> recording;
    std::string readMessage;
    if (!readWav(fname_in, format, recording, readMessage))
        return setMessage(message, "unable to open \"%s\"", fname_in);
    const size_t bytes = recording.size();
    RenderedNote rendered;
    if (!renderKeySample(k, &format, recording.data(), &bytes, options, &rendered, message))
        return 0;

    const bool looped = k->loopMode != 0 && rendered.loopEnd > rendered.loopStart;
    const size_t align = format.nBlockAlign;
    const size_t frames = static_cast<size_t>(rendered.frames);
    const std::string path = formatText("%s.wav", fname_out);
    WavLoopInfo loop;
    const ptrdiff_t note = k - m->keys;
    loop.rootKey = note >= 0 && note < kKeyCount ? static_cast<int32_t>(note) : 60;
    if (loopOnly && looped) {
        const size_t first = static_cast<size_t>(rendered.loopStart) * align;
        const size_t count = static_cast<size_t>(rendered.loopEnd - rendered.loopStart + 1) * align;
        loop.loopStart = 0;
        loop.loopEnd = rendered.loopEnd - rendered.loopStart;
        return writeWav(path, format, rendered.note.data() + first, static_cast<int32_t>(count),
                        nullptr, 0, nullptr, 0, message, &loop);
    }
    loop.loopStart = rendered.loopStart;
    loop.loopEnd = rendered.loopEnd;
    // The pad byte that made the byte count even is not a frame: write whole frames only.
    return writeWav(path, format, rendered.note.data(), static_cast<int32_t>(frames * align),
                    nullptr, 0, nullptr, 0, message, looped ? &loop : nullptr);
}

} // namespace tg
