// Progress of long commands on stderr: a live bar on a terminal, plain percentage lines
// otherwise, nothing with --quiet.
#pragma once

#include <string>

namespace tg::cli {

class ProgressPrinter {
  public:
    explicit ProgressPrinter(bool quiet);
    ProgressPrinter(bool quiet, bool terminal); // `terminal` chosen by the caller (tests)
    ~ProgressPrinter();
    ProgressPrinter(const ProgressPrinter&) = delete;
    ProgressPrinter& operator=(const ProgressPrinter&) = delete;

    // Shows `fraction` (0..1) with `text`; the dialogs' line breaks become spaces. An empty
    // text shows nothing.
    void report(double fraction, const std::string& text);

    // The analysis layer's callback shape: text first; returning true keeps the work going.
    bool operator()(const std::string& text, double fraction)
    {
        report(fraction, text);
        return true;
    }

  private:
    bool quiet_;
    bool terminal_;
    bool drawn_ = false;
    int lastPercent_ = -1;
    std::string lastLine_;
};

// The dialogs' texts on one line: "\r" dropped, "\n" a space, runs of spaces one space.
std::string singleLine(const std::string& text);

} // namespace tg::cli
