// A disk that fills up, for one scope of a test: files of this process cannot grow past a
// limit, and a write beyond it fails with EFBIG instead of killing the process.
#pragma once

#include <csignal>

#include <sys/resource.h>

namespace tg::test {

class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &saved_);
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
        rlimit small = saved_;
        small.rlim_cur = bytes;
        active_ = setrlimit(RLIMIT_FSIZE, &small) == 0;
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

    // False when the limit could not be set (the test cannot prove anything then).
    bool active() const { return active_; }

  private:
    rlimit saved_{};
    void (*handler_)(int) = SIG_DFL;
    bool active_ = false;
};

} // namespace tg::test
