// The fourteen named crossfade gain curves used by loop rendering.
#pragma once

namespace tg {

constexpr int kFadeCurveCount = 14;
constexpr int kDefaultFadeCurve = 2; // "Exponential^2"

// Name of curve `index` as shown in the curve boxes and stored in the settings; the
// default curve's name for an index outside the table.
const char* fadeCurveName(int index);

// Index of the curve called `name`; `fallback` when no curve has that name.
int fadeCurveIndex(const char* name, int fallback = kDefaultFadeCurve);

// Maps the curve names of older project files to today's names ("Exponential" ->
// "Exponential^2", "Logarithmic" -> "Log2"); any other name is returned unchanged.
const char* upgradeFadeCurveName(const char* name);

// Gains at position t (clamped to 0..1) of curve `index`: `a` for the audio fading out,
// `b` for the audio fading in. An index outside the table uses the default curve.
void fadeCurve(double t, int index, double& a, double& b);

} // namespace tg
