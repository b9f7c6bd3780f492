// Click/pop fades: a linear gain ramp per frame over the signed sample values.
#include "analysis/ClickPopFade.h"

#include "analysis/PcmSamples.h"

#include <algorithm>

namespace tg {

namespace {

using namespace pcm;

void scaleFrame(const WaveFormat& format, uint8_t* frame, double gain)
{
    const int width = bytesPerSample(format);
    for (int ch = 0; ch < format.nChannels; ++ch) {
        uint8_t* p = frame + ch * width;
        // Truncation toward zero keeps a faded sample from ever growing in size.
        writeSample(p, width, static_cast<int32_t>(readSample(p, width) * gain));
    }
}

} // namespace

void clickPopFade(const WaveFormat& format, uint8_t* data, size_t bytes, int64_t fadeIn,
                  int64_t fadeOut)
{
    if (data == nullptr || !isSupportedFormat(format))
        return;
    const int64_t frames = static_cast<int64_t>(bytes / format.nBlockAlign);
    const int64_t nIn = std::clamp<int64_t>(fadeIn, 0, frames);
    const int64_t nOut = std::clamp<int64_t>(fadeOut, 0, frames);

    for (int64_t i = 0; i < nIn; ++i)
        scaleFrame(format, data + i * format.nBlockAlign, static_cast<double>(i) / nIn);
    // Counting back from the last frame: gain 0, 1/n, 2/n, ... (n-1)/n.
    for (int64_t i = 0; i < nOut; ++i) {
        const int64_t frame = frames - 1 - i;
        scaleFrame(format, data + frame * format.nBlockAlign, static_cast<double>(i) / nOut);
    }
}

} // namespace tg
