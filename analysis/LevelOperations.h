// Normalize, change gain and find the highest level over the Key-Sample files of a
// selection; each changed file is rewritten safely.
#pragma once

#include "analysis/KeySampleFile.h"
#include "analysis/Levels.h"
#include "core/Records.h"

#include <functional>
#include <string>

namespace tg {

// Progress of a batch job: the text for the progress dialog (e.g. "Normalizing... (45 %
// done)") and the fraction done, 0..1. Returns false when the user cancelled. Called on the
// job's thread after every key.
using JobProgress = std::function<bool(const std::string& text, double fraction)>;
// Asks the user a yes/no question; true means yes.
using JobConfirm = std::function<bool(const std::string& question)>;

// Outcome of a batch job besides 1 (done) and 0 (failed or refused).
constexpr int kJobCancelled = -1;

// Normalizes the Key-Sample file of `note` in Multi-Sample `msl` to `targetDb`. Returns 1,
// or 0 with the reader's or writer's message.
int normalizeKeySample(const Project& project, int msl, int note, double targetDb,
                       bool equalLeftRight, bool noteAndRelease, std::string& message);

struct NormalizeOptions {
    bool toMultiSampleMaximum = false; // else to targetDb
    double targetDb = 0.0;
    bool equalLeftRight = false; // "Normalize Left/Right equally"
    bool noteAndRelease = false; // "Normalize only Note and Release"
};

// The normalize dialog's job. Returns 1 with "Normalizing done.", 0 with "No Key-Sample
// selected!" or a file's message, or kJobCancelled.
int normalizeKeySamples(const Project& project, KeyScope scope, int msl, int note,
                        const NormalizeOptions& options, const JobProgress& progress,
                        std::string& message);

enum class GainChannels { Both, Left, Right };

struct GainOptions {
    double gainDb = 0.0;
    GainChannels channels = GainChannels::Both;
    bool noteAndRelease = false; // "Gain Change only Note and Release"
    bool warnClipping = true;    // "Warn if Clipping will occur"
};

// True when `options` would lift a chosen channel of `highest` above 0 dB.
bool gainWouldClip(const ChannelLevels& highest, const GainOptions& options);

// The text of the clipping question.
constexpr const char* kClippingQuestion = "Some clipping will occur. Continue anyway?";

// The change-gain dialog's job. With the warning on and clipping ahead, `confirm` is asked
// "Some clipping will occur. Continue anyway?"; a no returns 0 with that question as the
// message and nothing changed. Returns 1 with "Changing gain done.", 0, or kJobCancelled.
int changeGainOfKeySamples(const Project& project, KeyScope scope, int msl, int note,
                           const GainOptions& options, const JobConfirm& confirm,
                           const JobProgress& progress, std::string& message);

// Measures the selection and reports "Maximum level in %1: %2 dB (= %3 %)" with the scope
// named "Sample", "Multi-Sample" or "Project". `levels` receives the highest peak of each
// channel. Returns 1, 0 with "No Key-Sample selected!" or a reader's message, or
// kJobCancelled.
int findHighestLevel(const Project& project, KeyScope scope, int msl, int note, bool noteAndRelease,
                     const JobProgress& progress, ChannelLevels& levels, std::string& message);

} // namespace tg
