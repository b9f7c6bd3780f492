// Progress reporting and the abort flag shared by every exporter.
#pragma once

#include <atomic>
#include <functional>
#include <string>

namespace tg {

// Set by the progress dialog's "Cancel" (or the CLI's interrupt handler); polled before each
// Key-Sample by the exporting thread and by the workers that render ahead of it; atomic so that
// a signal handler may set it too.
extern std::atomic<bool> exportAbortFlag;

// The progress callback: fraction 0.0-1.0 and the text to show. May be empty.
using ExportProgressCallback = std::function<void(double fraction, const std::string& text)>;

// Installs the callback every exporter reports to; an empty function silences progress.
void setExportProgressCallback(ExportProgressCallback callback);

// Reports to the installed callback, if any.
void reportExportProgress(double fraction, const std::string& text);

// Common texts of the pipeline.
constexpr const char* kExportAbortedText = "Export aborted.";
constexpr const char* kAnalyzingLevelsText = "Analyzing Levels of Key-Samples.";

} // namespace tg
