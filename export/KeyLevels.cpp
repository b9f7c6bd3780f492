// Width-specialised loops over the pcm helpers of the analysis layer: the per-sample rules are
// the helpers' own, only the dispatch on the width moves out of the loop.
#include "export/KeyLevels.h"

#include "analysis/PcmSamples.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tg {

namespace {

template <int Width> int32_t peakOf(const uint8_t* data, size_t samples)
{
    int32_t peak = 0;
    for (size_t i = 0; i < samples; ++i)
        peak = std::max(peak, std::abs(pcm::readSample(data + i * Width, Width)));
    return peak;
}

template <int Width> void scale(double gain, uint8_t* data, size_t samples)
{
    for (size_t i = 0; i < samples; ++i) {
        uint8_t* p = data + i * Width;
        pcm::writeSample(p, Width, pcm::truncateScaled(pcm::readSample(p, Width) * gain));
    }
}

// The 16-bit case, by far the most common, written so that it vectorises: clipping the product
// to the sample range before truncating gives the same value as truncating first and clipping
// after, since no value between the limits and the next integer outward exists.
// The samples are read in the host's byte order, which must then be the data's.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "16-bit samples are little-endian");

void scale16(double gain, uint8_t* data, size_t samples)
{
    for (size_t i = 0; i < samples; ++i) {
        int16_t value;
        std::memcpy(&value, data + 2 * i, 2);
        double scaled = double(value) * gain;
        scaled = scaled > 32767.0 ? 32767.0 : scaled < -32768.0 ? -32768.0 : scaled;
        value = int16_t(int32_t(scaled));
        std::memcpy(data + 2 * i, &value, 2);
    }
}

// Samples in the whole frames of `bytes`.
size_t wholeFrameSamples(const WaveFormat& format, size_t bytes)
{
    return bytes / format.nBlockAlign * format.nChannels;
}

} // namespace

double keyPeakLevel(const WaveFormat& format, const uint8_t* data, size_t bytes)
{
    if (data == nullptr || !pcm::isSupportedFormat(format))
        return 0.0;
    const int width = pcm::bytesPerSample(format);
    const size_t samples = wholeFrameSamples(format, bytes);
    const int32_t peak = width == 1   ? peakOf<1>(data, samples)
                         : width == 2 ? peakOf<2>(data, samples)
                                      : peakOf<3>(data, samples);
    return peak / double(pcm::sampleMax(width));
}

void applyKeyGain(double gain, const WaveFormat& format, uint8_t* data, size_t bytes)
{
    if (data == nullptr || gain == 1.0 || !pcm::isSupportedFormat(format))
        return;
    const size_t samples = wholeFrameSamples(format, bytes);
    switch (pcm::bytesPerSample(format)) {
    case 1:
        scale<1>(gain, data, samples);
        break;
    case 2:
        scale16(gain, data, samples);
        break;
    default:
        scale<3>(gain, data, samples);
        break;
    }
}

} // namespace tg
