// The initialization log tg_init_log.txt: rewritten at every start and appended piece by piece,
// each piece opening and closing the file, so the log is complete up to the last step even if
// the program dies.
#pragma once

#include <string>

namespace tg {

constexpr const char* kInitLogFileName = "tg_init_log.txt";

class InitLog {
  public:
    explicit InitLog(std::string path) : path_(std::move(path)) {}

    // Creates the file anew with its first line. A log that cannot be written is skipped
    // silently, here and in append().
    void begin();
    void append(const std::string& text);
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

} // namespace tg
