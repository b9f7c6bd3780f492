// The crossfade gain curves: plain, normalised and loudness-boosted variants.
#include "analysis/FadeCurves.h"

#include <cmath>
#include <cstring>

namespace tg {

namespace {

const char* const kNames[kFadeCurveCount] = {
    "Linear",        "Sinus",         "Exponential^2", "Log2",         "Exp^2 +1.5dB",
    "Exp^2 +3.0dB",  "Exp^2 +4.5dB",  "Exp^2 +6.0dB",  "Exp^2 +7.5dB", "Exp^2 +9.0dB",
    "Exponential^3", "Exponential^4", "Log3",          "Log4"};

// The gain pair of a power curve: a = 1 - t^e, b = 1 - (1 - t)^e, normalised to sum 1.
void normalisedPower(double t, double exponent, double& a, double& b)
{
    a = 1.0 - std::pow(t, exponent);
    b = 1.0 - std::pow(1.0 - t, exponent);
    const double sum = a + b;
    if (sum > 0.0) {
        a /= sum;
        b /= sum;
    }
}

} // namespace

const char* fadeCurveName(int index)
{
    if (index < 0 || index >= kFadeCurveCount)
        index = kDefaultFadeCurve;
    return kNames[index];
}

int fadeCurveIndex(const char* name, int fallback)
{
    if (name == nullptr)
        return fallback;
    for (int i = 0; i < kFadeCurveCount; ++i) {
        if (std::strcmp(kNames[i], name) == 0)
            return i;
    }
    return fallback;
}

const char* upgradeFadeCurveName(const char* name)
{
    if (name != nullptr && std::strcmp(name, "Exponential") == 0)
        return "Exponential^2";
    if (name != nullptr && std::strcmp(name, "Logarithmic") == 0)
        return "Log2";
    return name;
}

void fadeCurve(double t, int index, double& a, double& b)
{
    t = t < 0.0 ? 0.0 : t > 1.0 ? 1.0 : t;
    if (index < 0 || index >= kFadeCurveCount)
        index = kDefaultFadeCurve;

    switch (index) {
    case 0:
        a = 1.0 - t;
        b = t;
        return;
    case 1:
        // The curve is defined with this ten-digit value of pi.
        a = 0.5 + 0.5 * std::cos(3.141592654 * t);
        b = 1.0 - a;
        return;
    case 3:
        normalisedPower(t, 0.5, a, b);
        return;
    case 10:
        normalisedPower(t, 3.0, a, b);
        return;
    case 11:
        normalisedPower(t, 4.0, a, b);
        return;
    case 12:
        // Deliberately 0.3333, not one third: the curve is defined with this value.
        normalisedPower(t, 0.3333, a, b);
        return;
    case 13:
        normalisedPower(t, 0.25, a, b);
        return;
    default:
        break;
    }

    // Index 2 and the boosted rows 4..9 share the squared curve.
    normalisedPower(t, 2.0, a, b);
    if (index >= 4 && index <= 9) {
        // Lift the loudness dip of an uncorrelated crossfade: full boost in the middle,
        // none at either end.
        const double dB = 1.5 * (index - 3);
        const double m = 2.0 * std::fmin(a, 1.0 - a);
        const double g = 1.0 + m * (std::pow(10.0, dB / 20.0) - 1.0);
        a *= g;
        b *= g;
    }
}

} // namespace tg
