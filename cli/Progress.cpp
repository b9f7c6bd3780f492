// The one progress printer of the CLI's long commands.
#include "cli/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace tg::cli {

namespace {
constexpr int kBarWidth = 30;
}

std::string singleLine(const std::string& text)
{
    std::string line;
    for (char c : text) {
        if (c == '\r')
            continue;
        const char out = c == '\n' ? ' ' : c;
        if (out == ' ' && !line.empty() && line.back() == ' ')
            continue;
        line += out;
    }
    return line;
}

ProgressPrinter::ProgressPrinter(bool quiet) : ProgressPrinter(quiet, isatty(STDERR_FILENO) != 0) {}

ProgressPrinter::ProgressPrinter(bool quiet, bool terminal) : quiet_(quiet), terminal_(terminal) {}

ProgressPrinter::~ProgressPrinter()
{
    if (terminal_ && drawn_)
        std::cerr << '\n';
}

void ProgressPrinter::report(double fraction, const std::string& text)
{
    if (quiet_ || text.empty())
        return;
    const std::string line = singleLine(text);
    const int percent = static_cast<int>(std::clamp(fraction, 0.0, 1.0) * 100.0);
    if (terminal_) {
        const int filled = percent * kBarWidth / 100;
        std::cerr << "\r[" << std::string(static_cast<size_t>(filled), '#')
                  << std::string(static_cast<size_t>(kBarWidth - filled), ' ') << "] " << percent
                  << " % " << line << "\x1b[K" << std::flush;
        drawn_ = true;
    } else if (percent != lastPercent_ || line != lastLine_) {
        std::cerr << percent << " % " << line << '\n';
    }
    lastPercent_ = percent;
    lastLine_ = line;
}

} // namespace tg::cli
