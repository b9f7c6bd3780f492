// Recordings read for level analysis and kept for rendering, so that each Key-Sample file is
// read once per export. A budget bounds the memory: past it, a recording is read again later.
#pragma once

#include "export/ExportServices.h"

#include <cstddef>
#include <map>
#include <mutex>
#include <utility>

namespace tg {

class KeptRecordings {
  public:
    explicit KeptRecordings(size_t budgetBytes) : budget_(budgetBytes) {}

    // Keeps `audio` for key `note` of the selection's `ordinal`-th Multi-Sample when it fits the
    // budget (it is moved from only then).
    void keep(int ordinal, int note, KeyAudio& audio)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (audio.data.size() > budget_ - used_)
            return;
        used_ += audio.data.size();
        kept_[{ordinal, note}] = std::move(audio);
    }

    // Hands over the kept recording of the key, once. False when none was kept.
    bool take(int ordinal, int note, KeyAudio& audio)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto it = kept_.find({ordinal, note});
        if (it == kept_.end())
            return false;
        audio = std::move(it->second);
        used_ -= audio.data.size();
        kept_.erase(it);
        return true;
    }

  private:
    std::mutex mutex_;
    size_t budget_;
    size_t used_ = 0;
    std::map<std::pair<int, int>, KeyAudio> kept_;
};

} // namespace tg
