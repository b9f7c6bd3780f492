// Onset, level and autocorrelation pitch of recorded test audio.
#include "tests/support/ToneAnalysis.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tg::test {

std::vector<double> firstChannel(const std::vector<uint8_t>& bytes, int channels, int64_t frames)
{
    std::vector<double> samples;
    const size_t frameBytes = size_t(channels) * 2;
    for (int64_t i = 0; i < frames && (size_t(i) + 1) * frameBytes <= bytes.size(); ++i) {
        int16_t value;
        std::memcpy(&value, bytes.data() + size_t(i) * frameBytes, 2);
        samples.push_back(value);
    }
    return samples;
}

int64_t firstFrameAbove(const std::vector<double>& samples, double threshold)
{
    for (size_t i = 0; i < samples.size(); ++i)
        if (std::fabs(samples[i]) > threshold)
            return int64_t(i);
    return -1;
}

double peakBetween(const std::vector<double>& samples, int64_t from, int64_t to)
{
    double peak = 0.0;
    for (int64_t i = std::max<int64_t>(from, 0); i < to && i < int64_t(samples.size()); ++i)
        peak = std::max(peak, std::fabs(samples[size_t(i)]));
    return peak;
}

double rmsBetween(const std::vector<double>& samples, int64_t from, int64_t to)
{
    double sum = 0.0;
    int64_t count = 0;
    for (int64_t i = std::max<int64_t>(from, 0); i < to && i < int64_t(samples.size()); ++i) {
        sum += samples[size_t(i)] * samples[size_t(i)];
        ++count;
    }
    return count > 0 ? std::sqrt(sum / double(count)) : 0.0;
}

double pitchHz(const std::vector<double>& samples, int64_t from, int64_t to, double rate,
               double lowHz, double highHz)
{
    to = std::min<int64_t>(to, int64_t(samples.size()));
    const int minLag = int(std::floor(rate / highHz));
    const int maxLag = int(std::ceil(rate / lowHz));
    if (from < 0 || to - from <= 2 * maxLag)
        return 0.0;
    auto correlation = [&](int lag) {
        double sum = 0.0;
        double energyA = 0.0;
        double energyB = 0.0;
        for (int64_t i = from; i + lag < to; ++i) {
            const double a = samples[size_t(i)];
            const double b = samples[size_t(i + lag)];
            sum += a * b;
            energyA += a * a;
            energyB += b * b;
        }
        return energyA > 0 && energyB > 0 ? sum / std::sqrt(energyA * energyB) : 0.0;
    };
    int bestLag = minLag;
    double best = -2.0;
    for (int lag = minLag; lag <= maxLag; ++lag) {
        const double value = correlation(lag);
        if (value > best) {
            best = value;
            bestLag = lag;
        }
    }
    const double left = correlation(bestLag - 1);
    const double right = correlation(bestLag + 1);
    const double denominator = left - 2.0 * best + right;
    const double shift = denominator != 0.0 ? 0.5 * (left - right) / denominator : 0.0;
    return rate / (double(bestLag) + shift);
}

double noteHz(int note)
{
    return 440.0 * std::pow(2.0, (note - 69) / 12.0);
}

double pitchNearNote(const std::vector<double>& samples, int64_t from, int64_t to, double rate,
                     int note)
{
    return pitchHz(samples, from, to, rate, noteHz(note) / 1.4, noteHz(note) * 1.4);
}

double crossingPitchHz(const std::vector<double>& samples, int64_t from, int64_t to, double rate)
{
    to = std::min<int64_t>(to, int64_t(samples.size()));
    double first = -1.0;
    double last = -1.0;
    int crossings = 0;
    for (int64_t i = std::max<int64_t>(from, 0) + 1; i < to; ++i) {
        const double a = samples[size_t(i - 1)], b = samples[size_t(i)];
        if (a < 0.0 && b >= 0.0) {
            last = double(i - 1) + a / (a - b);
            first = crossings++ == 0 ? last : first;
        }
    }
    return crossings > 1 ? (crossings - 1) * rate / (last - first) : 0.0;
}

} // namespace tg::test
