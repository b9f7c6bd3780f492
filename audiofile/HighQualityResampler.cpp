// libsoxr behind the converter's high-quality mode: very-high-quality recipe, int32 I/O.
#include "audiofile/HighQualityResampler.h"

#include <soxr.h>

namespace tg {

bool resampleHighQuality(std::vector<std::vector<int32_t>>& channels, int32_t frames,
                         uint32_t sourceRate, uint32_t destinationRate, int32_t outputFrames,
                         std::string& error)
{
    const unsigned count = static_cast<unsigned>(channels.size());
    std::vector<int32_t> in(static_cast<size_t>(frames) * count);
    for (size_t i = 0; i < static_cast<size_t>(frames); ++i)
        for (unsigned c = 0; c < count; ++c)
            in[i * count + c] = channels[c][i];

    // The values stay at 24-bit scale inside int32 words: soxr's integer output rounds to whole
    // units of that scale, and with dithering off the result is the same on every run.
    soxr_io_spec_t io = soxr_io_spec(SOXR_INT32_I, SOXR_INT32_I);
    io.flags |= SOXR_NO_DITHER;
    soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
    soxr_runtime_spec_t runtime = soxr_runtime_spec(1);

    std::vector<int32_t> out(static_cast<size_t>(outputFrames) * count, 0);
    size_t consumed = 0, produced = 0;
    soxr_error_t failure = soxr_oneshot(
        sourceRate, destinationRate, count, in.data(), static_cast<size_t>(frames), &consumed,
        out.data(), static_cast<size_t>(outputFrames), &produced, &io, &quality, &runtime);
    if (failure) {
        error = failure;
        return false;
    }
    // soxr may end a frame short of the truncated count; repeat its last frame there.
    for (size_t i = produced; i < static_cast<size_t>(outputFrames); ++i)
        for (unsigned c = 0; c < count; ++c)
            out[i * count + c] = produced ? out[(produced - 1) * count + c] : 0;

    for (unsigned c = 0; c < count; ++c) {
        channels[c].assign(static_cast<size_t>(outputFrames), 0);
        for (size_t i = 0; i < static_cast<size_t>(outputFrames); ++i)
            channels[c][i] = out[i * count + c];
    }
    return true;
}

} // namespace tg
