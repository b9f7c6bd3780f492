// The renderer: copies the note out of the recording and crossfades the loop seams.
#include "analysis/Renderer.h"

#include "analysis/ClickPopFade.h"
#include "analysis/FadeCurves.h"
#include "analysis/PcmSamples.h"
#include "core/Message.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace tg {

namespace {

struct Source {
    const WaveFormat& format;
    const uint8_t* data;
    int64_t frames;
};

// Copies `count` recording frames from `from` (stepping by `step`, +1 or -1) to buffer
// frame `to`.
void copyFrames(const Source& src, std::vector<uint8_t>& buffer, int64_t to, int64_t from,
                int64_t count, int step)
{
    const size_t align = src.format.nBlockAlign;
    if (count <= 0)
        return;
    if (step == 1) { // the note and forward loops: one block copy
        std::memcpy(buffer.data() + static_cast<size_t>(to) * align,
                    src.data + static_cast<size_t>(from) * align,
                    static_cast<size_t>(count) * align);
        return;
    }
    for (int64_t i = 0; i < count; ++i)
        std::memcpy(buffer.data() + static_cast<size_t>(to + i) * align,
                    src.data + static_cast<size_t>(from + step * i) * align, align);
}

// Blends buffer frames at..at+length-1 with their partners in the recording, partner of
// frame i being recording frame partner(i): trunc(frame * a + partner * b), a and b from
// the curve at t = (i + 1) / length. The last blended frame is thus wholly its partner:
// every seam below ends its crossfade on the frame the jump must follow.
template <typename Partner>
void crossfade(const Source& src, std::vector<uint8_t>& buffer, int64_t at, int64_t length,
               int curve, Partner partner)
{
    const int width = pcm::bytesPerSample(src.format);
    const size_t align = src.format.nBlockAlign;
    for (int64_t i = 0; i < length; ++i) {
        double a = 1.0, b = 0.0;
        fadeCurve(static_cast<double>(i + 1) / static_cast<double>(length), curve, a, b);
        uint8_t* frame = buffer.data() + static_cast<size_t>(at + i) * align;
        const uint8_t* other = src.data + static_cast<size_t>(partner(i)) * align;
        for (int ch = 0; ch < src.format.nChannels; ++ch) {
            const double mixed = pcm::readSample(frame + ch * width, width) * a +
                                 pcm::readSample(other + ch * width, width) * b;
            // Boosted curves can overshoot on correlated audio: clip rather than wrap.
            pcm::writeSample(frame + ch * width, width, static_cast<int32_t>(mixed));
        }
    }
}

bool allocate(std::vector<uint8_t>& buffer, int64_t frames, const WaveFormat& format)
{
    try {
        buffer.assign(static_cast<size_t>(frames) * format.nBlockAlign, 0);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    return true;
}

} // namespace

int renderKeySample(const TGmsl_key* k, const WaveFormat* wft_in, const uint8_t* buff_in,
                    const size_t* nbuff_in, const RenderOptions& options, RenderedNote* out,
                    std::string& message)
{
    if (k == nullptr)
        return setMessage(message, "illegal pointers (p, m or k is equal NULL");
    if (wft_in == nullptr || buff_in == nullptr || nbuff_in == nullptr)
        return setMessage(message, "illegal pointers (wft_in, buff_in or nbuff_in is equal NULL");
    if (out == nullptr)
        return setMessage(message, "illegal pointers (wft_out, buff_note_out, nbuff_note_out, "
                                   "buff_release_out or nbuff_release_out is equal NULL");
    out->note.clear();
    out->release.clear();
    out->loopStart = out->loopEnd = 0;
    out->frames = 0;
    const WaveFormat& format = *wft_in;
    const int64_t frames =
        pcm::isSupportedFormat(format) ? static_cast<int64_t>(*nbuff_in / format.nBlockAlign) : 0;
    if (frames <= 0)
        return setMessage(message, "the number of samples is less or equal 0");

    const int64_t noteIn = std::clamp<int64_t>(k->Note_In, 0, frames - 1);
    const int64_t noteOut = std::min<int64_t>(k->Note_Out, frames - 1);
    if (noteOut + 1 - noteIn <= 0)
        return setMessage(message, "the note's length is equal 0");

    const Source src{format, buff_in, frames};
    const int64_t loopIn = k->Loop_In;
    const int64_t loopOut = k->Loop_Out;
    const bool looped = !options.plainNote && (k->loopMode == 1 || k->loopMode == 2) &&
                        loopIn >= noteIn && loopOut > loopIn && loopOut <= noteOut;
    std::vector<uint8_t>& note = out->note;
    int64_t loopStart = 0;
    int64_t loopEnd = 0;

    if (!looped) {
        const int64_t count = noteOut + 1 - noteIn;
        if (!allocate(note, count, format))
            return setMessage(message, "unable to allocate memory for rendered audio data (note)");
        copyFrames(src, note, 0, noteIn, count, 1);
        if (k->clickpopred)
            clickPopFade(format, note.data(), note.size(), options.clickPopFadeIn,
                         options.clickPopFadeOut);
        loopEnd = count - 1;
    } else {
        const int64_t end = options.includeAfterLoop ? noteOut : loopOut;
        loopStart = loopIn - noteIn;
        if (k->loopMode == 1) {
            const int64_t count = end + 1 - noteIn;
            if (!allocate(note, count, format))
                return setMessage(message,
                                  "unable to allocate memory for rendered audio data (note)");
            copyFrames(src, note, 0, noteIn, count, 1);
            // A wrap plays Loop_Out and then Loop_In, so Loop_Out must end up as the frame
            // before Loop_In: the X frames Loop_Out - X + 1 .. Loop_Out fade into the X
            // frames Loop_In - X .. Loop_In - 1, frame Loop_Out - X + 1 + i with partner
            // Loop_In - X + i, and the wrap continues the recording exactly.
            const int64_t x =
                std::clamp<int64_t>(k->xfadeLen, 0, std::min(loopOut + 1 - loopIn, loopIn));
            crossfade(src, note, loopOut - x + 1 - noteIn, x, k->xfadeCurve,
                      [&](int64_t i) { return loopIn - x + i; });
            loopEnd = loopOut - noteIn;
        } else {
            // Backward-forward: forward from Loop_In up to the turn point T = Loop_Out - Y,
            // then the loop reversed from T down to Loop_In - Y; the result is played as one
            // forward loop. In buffer frames (recording frame r sits at r - Note_In before
            // the turn): the forward pass ends at F_end = T - 1 - Note_In, the reversed pass
            // holds recording frame T - j at F_end + 1 + j, and the rendered loop ends at
            // L_end, holding recording frame Loop_In - Y + 1 (one reversed frame, Loop_In - Y,
            // lies past it).
            //  - Turn into the reversed pass: played backwards, the frame before T is T + 1.
            //    Buffer frames F_end - X + 1 + i fade into recording frames T + X - i, so
            //    F_end becomes T + 1.
            //  - Wrap back to Loop_In: played forwards, the frame before Loop_In is
            //    Loop_In - 1. Buffer frames L_end - Y + 1 + i fade into recording frames
            //    Loop_In - Y + i, so L_end becomes Loop_In - 1.
            const int64_t y =
                std::clamp<int64_t>(k->bfxfadeLen, 0, std::min(loopOut - loopIn - 1, loopIn));
            const int64_t forward = loopOut - loopIn - y;
            const int64_t turn = loopOut - y;
            const int64_t count = (loopOut - loopIn) + (end + 1 - noteIn) - y;
            if (!allocate(note, count, format))
                return setMessage(message, "unable to allocate memory for rendered audio data "
                                           "(note with x-fade)");
            const int64_t backward = count - loopStart - forward -
                                     (options.includeAfterLoop ? noteOut + 1 - loopOut : 0);
            copyFrames(src, note, 0, noteIn, loopStart, 1);
            copyFrames(src, note, loopStart, loopIn, forward, 1);
            copyFrames(src, note, loopStart + forward, turn, backward, -1);
            if (options.includeAfterLoop)
                copyFrames(src, note, loopStart + forward + backward, loopOut,
                           noteOut + 1 - loopOut, 1);
            loopEnd = 2 * loopOut - loopIn - noteIn - y - 1;

            const int64_t x =
                std::clamp<int64_t>(k->xfadeLen, 0, std::min(forward, frames - 1 - turn));
            crossfade(src, note, loopStart + forward - x, x, k->xfadeCurve,
                      [&](int64_t i) { return turn + x - i; });
            crossfade(src, note, loopEnd - y + 1, y, k->bfxfadeCurve,
                      [&](int64_t i) { return loopIn - y + i; });
        }
        if (k->clickpopred) {
            const int64_t lastFrame = static_cast<int64_t>(note.size() / format.nBlockAlign) - 1;
            const int64_t fadeIn = std::min<int64_t>(options.clickPopFadeIn, loopStart);
            const int64_t fadeOut =
                options.includeAfterLoop
                    ? std::min<int64_t>(options.clickPopFadeOut, lastFrame - loopEnd)
                    : 0;
            clickPopFade(format, note.data(), note.size(), fadeIn, fadeOut);
        }
    }

    const int64_t renderedFrames = static_cast<int64_t>(note.size() / format.nBlockAlign);
    // Every rendered note has an even byte count (RIFF chunks are word aligned).
    if (note.size() % 2 != 0)
        note.push_back(0);
    out->format = format;
    out->frames = renderedFrames;
    out->loopStart = static_cast<int32_t>(loopStart);
    out->loopEnd = static_cast<int32_t>(loopEnd);
    return 1;
}

} // namespace tg
