// The sample converter: decode to 24-bit scale, resample, carry loop points, encode.
#include "audiofile/SampleConverter.h"

#include "audiofile/HighQualityResampler.h"
#include "audiofile/SampleAccess.h"
#include "audiofile/ZeroCrossing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>

namespace tg {

namespace {

using Channel = std::vector<int32_t>;

constexpr int32_t kMinimumFrames = 16;
constexpr uint32_t kMaximumRate = 384000;

bool validFormat(const WaveFormat& f)
{
    return f.wFormatTag == 1 && (f.nChannels == 1 || f.nChannels == 2) &&
           (f.wBitsPerSample == 8 || f.wBitsPerSample == 16 || f.wBitsPerSample == 24) &&
           f.nSamplesPerSec > 0 && f.nSamplesPerSec <= kMaximumRate;
}

int fail(std::string* message, const char* text)
{
    if (message)
        *message += text;
    return 0;
}

// A source position i / r kept as the exact fraction i * sourceRate / destinationRate, so that
// whole positions are whole and fractions do not drift over long buffers.
struct Position {
    int64_t whole;   // floor of the position
    double fraction; // 0 <= fraction < 1
};

Position positionOf(int64_t i, uint32_t sourceRate, uint32_t destinationRate)
{
    const int64_t n = i * sourceRate;
    return {n / destinationRate, static_cast<double>(n % destinationRate) / destinationRate};
}

// Value of `x` at a source position by linear interpolation; frames past the last frame hold
// the last frame.
double interpolate(const Channel& x, int32_t frames, Position t)
{
    const int64_t last = frames - 1;
    const double a = x[static_cast<size_t>(t.whole < last ? t.whole : last)];
    const double b = x[static_cast<size_t>(t.whole + 1 < last ? t.whole + 1 : last)];
    return a * (1.0 - t.fraction) + b * t.fraction;
}

struct Rates {
    uint32_t source;
    uint32_t destination;
};

// Linear interpolation for outputs `from` .. `to` (inclusive) at source positions i / r.
void resampleLinear(const Channel& x, int32_t frames, Rates rates, Channel& y, int32_t from,
                    int32_t to)
{
    for (int32_t i = from; i <= to; ++i)
        y[i] = static_cast<int32_t>(
            interpolate(x, frames, positionOf(i, rates.source, rates.destination)));
}

// Weighted mean of the source span i/r .. (i+1)/r for outputs 1 .. N-2 (downsampling only):
// the interpolated value at each end weighted by the part of its frame inside the span, every
// whole frame between them weighted 1.
void resampleAverage(const Channel& x, int32_t frames, Rates rates, Channel& y, int32_t outFrames)
{
    for (int32_t i = 1; i <= outFrames - 2; ++i) {
        const Position a = positionOf(i, rates.source, rates.destination);
        const Position b = positionOf(i + 1, rates.source, rates.destination);
        double sum =
            interpolate(x, frames, a) * (1.0 - a.fraction) + interpolate(x, frames, b) * b.fraction;
        double weight = (1.0 - a.fraction) + b.fraction;
        for (int64_t j = a.whole + 1; j <= b.whole - 1 && j < frames; ++j) {
            sum += x[static_cast<size_t>(j)];
            weight += 1.0;
        }
        y[i] = static_cast<int32_t>(sum / weight);
    }
}

// Resamples one channel array to `outFrames` frames by the linear or averaging rule.
void resampleSimple(const Channel& x, int32_t frames, Rates rates, ResampleMode mode, Channel& y,
                    int32_t outFrames)
{
    if (outFrames <= 0)
        return;
    if (rates.destination > rates.source) {
        resampleLinear(x, frames, rates, y, 0, outFrames - 2);
    } else {
        y[0] = x[0];
        if (mode == ResampleMode::Average)
            resampleAverage(x, frames, rates, y, outFrames);
        else
            resampleLinear(x, frames, rates, y, 1, outFrames - 2);
    }
    y[static_cast<size_t>(outFrames - 1)] = x[static_cast<size_t>(frames - 1)];
}

void encodeSample(uint8_t* p, int bits, int32_t v)
{
    switch (bits) {
    case 8:
        p[0] = static_cast<uint8_t>((v >> 16) ^ 128);
        break;
    case 16: {
        const int32_t s = v >> 8;
        p[0] = static_cast<uint8_t>(s);
        p[1] = static_cast<uint8_t>(s >> 8);
        break;
    }
    default:
        p[0] = static_cast<uint8_t>(v);
        p[1] = static_cast<uint8_t>(v >> 8);
        p[2] = static_cast<uint8_t>(v >> 16);
        break;
    }
}

void encode(const std::vector<Channel>& ch, int sourceChannels, const WaveFormat& dst,
            ChannelMode mode, int32_t frames, std::vector<uint8_t>& out)
{
    const int bytes = dst.wBitsPerSample / 8;
    for (int32_t i = 0; i < frames; ++i) {
        uint8_t* p = out.data() + static_cast<size_t>(i) * dst.nBlockAlign;
        const int32_t left = ch[0][i];
        const int32_t right = sourceChannels == 2 ? ch[1][i] : left;
        if (dst.nChannels == 2) {
            encodeSample(p, dst.wBitsPerSample, left);
            encodeSample(p + bytes, dst.wBitsPerSample, right);
        } else if (sourceChannels == 1 || mode == ChannelMode::Left) {
            encodeSample(p, dst.wBitsPerSample, left);
        } else if (mode == ChannelMode::Right) {
            encodeSample(p, dst.wBitsPerSample, right);
        } else {
            encodeSample(p, dst.wBitsPerSample, (left + right) / 2);
        }
    }
}

// trunc(frame * r), exactly.
int32_t scaleFrame(int64_t frame, Rates rates)
{
    return static_cast<int32_t>(frame * rates.destination / rates.source);
}

int32_t scaleLoopStart(int32_t start, Rates rates)
{
    return start < 1 ? 0 : scaleFrame(start, rates);
}

// The end is inclusive: scale the frame after it, then step back one.
int32_t scaleLoopEnd(int32_t end, int32_t frames, int32_t outFrames, Rates rates)
{
    if (end >= frames - 1)
        return outFrames - 1;
    if (end <= 0)
        return 0;
    return scaleFrame(static_cast<int64_t>(end) + 1, rates) - 1;
}

bool onZeroCrossing(const WaveFormat& f, const std::vector<uint8_t>& data, int32_t position)
{
    return findZeroCrossing(&f, data.data(), static_cast<int32_t>(data.size()), position, 0,
                            kZeroCrossingEitherChannel) == position;
}

} // namespace

int convertSamples(std::vector<uint8_t>& data, WaveFormat& source, WaveFormat& destination,
                   int32_t* loopStart, int32_t* loopEnd, ChannelMode channelMode,
                   ResampleMode resampleMode, std::string* message)
{
    if (message)
        *message = "convert sample error: ";
    if (!validFormat(source))
        return fail(message, "unsupported wave format (source)");
    if (!validFormat(destination))
        return fail(message, "unsupported wave format (destination)");
    completeWaveFormat(source);
    completeWaveFormat(destination);

    const int32_t frames = static_cast<int32_t>(data.size() / source.nBlockAlign);
    if (data.empty() || frames < kMinimumFrames)
        return fail(message, "sample too small or buffer=NULL");
    if (source.nSamplesPerSec == destination.nSamplesPerSec &&
        source.nChannels == destination.nChannels &&
        source.wBitsPerSample == destination.wBitsPerSample)
        return 1;

    const Rates rates{source.nSamplesPerSec, destination.nSamplesPerSec};
    const double r = static_cast<double>(rates.destination) / rates.source;
    const bool rateChanges = rates.source != rates.destination;
    const int64_t outCount = static_cast<int64_t>(frames) * rates.destination / rates.source;
    if (outCount * destination.nBlockAlign > std::numeric_limits<int32_t>::max())
        return fail(message, "unable to allocate memory for output buffer.");
    const int32_t outFrames = static_cast<int32_t>(outCount);

    // Decode into channel arrays at 24-bit scale; each is large enough for the result too.
    const int sourceChannels = source.nChannels;
    std::vector<Channel> decoded(sourceChannels), converted(sourceChannels);
    try {
        const size_t capacity = static_cast<size_t>(std::ceil(frames * (r > 1.0 ? r : 1.0))) + 16;
        for (int c = 0; c < sourceChannels; ++c) {
            decoded[c].assign(capacity, 0);
            for (int32_t i = 0; i < frames; ++i)
                decoded[c][i] = sampleAt24(source, data.data(), i, c);
            converted[c].assign(capacity, 0);
        }
    } catch (const std::exception&) {
        return fail(message, "unable to allocate memory for temporary buffer");
    }

    bool startOnZero = false, endOnZero = false;
    if (rateChanges) {
        startOnZero = loopStart && onZeroCrossing(source, data, *loopStart);
        endOnZero = loopEnd && onZeroCrossing(source, data, *loopEnd + 1);
        if (resampleMode == ResampleMode::HighQuality) {
            std::string error;
            converted = decoded;
            if (!resampleHighQuality(converted, frames, source.nSamplesPerSec,
                                     destination.nSamplesPerSec, outFrames, error))
                return fail(message, ("resampling failed: " + error).c_str());
        } else {
            for (int c = 0; c < sourceChannels; ++c)
                resampleSimple(decoded[c], frames, rates, resampleMode, converted[c], outFrames);
        }
    } else {
        converted.swap(decoded);
    }

    std::vector<uint8_t> out;
    try {
        out.assign(static_cast<size_t>(outFrames) * destination.nBlockAlign, 0);
    } catch (const std::exception&) {
        return fail(message, "unable to allocate memory for output buffer.");
    }
    encode(converted, sourceChannels, destination, channelMode, outFrames, out);

    if (rateChanges) {
        const int32_t bytes = static_cast<int32_t>(out.size());
        int32_t start = 0;
        if (loopStart) {
            start = scaleLoopStart(*loopStart, rates);
            if (startOnZero)
                start = findZeroCrossing(&destination, out.data(), bytes, start, 0,
                                         kZeroCrossingEitherChannel);
            start = std::max(0, std::min(start, outFrames - 1));
            *loopStart = start;
        }
        if (loopEnd) {
            int32_t end = scaleLoopEnd(*loopEnd, frames, outFrames, rates);
            if (endOnZero)
                end = findZeroCrossing(&destination, out.data(), bytes, end + 1, 0,
                                       kZeroCrossingEitherChannel) -
                      1;
            *loopEnd = std::max(start, std::min(end, outFrames - 1));
        }
    }
    data.swap(out);
    return 1;
}

} // namespace tg
