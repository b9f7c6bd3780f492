#include "cli/SemiAutomaticSession.h"

#include "analysis/Levels.h"
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "core/NoteNames.h"
#include "recording/OfflineTakeSource.h"
#include "recording/RecordingRun.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace tg::cli {

namespace {

// Poll interval while waiting for a line, so that a stop signal is seen quickly.
constexpr int kInputPollMs = 200;
// The longest answer kept; anything longer on one line is cut there.
constexpr size_t kMaxLineBytes = 4096;

// The lines typed on standard input, read without holding up the run's timers.
class InputLines {
  public:
    // Waits up to `timeoutMs` for a whole line; true with `line` (without its line break).
    bool next(std::string& line, int timeoutMs)
    {
        if (takeBuffered(line))
            return true;
        if (ended_) {
            // Nothing more will come: the wait is still a wait, not a spin.
            if (timeoutMs > 0)
                std::this_thread::sleep_for(std::chrono::milliseconds(timeoutMs));
            return false;
        }
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (::poll(&input, 1, timeoutMs) <= 0)
            return false; // timed out, or a signal came
        char chunk[256];
        const ssize_t got = ::read(STDIN_FILENO, chunk, sizeof chunk);
        if (got > 0)
            buffer_.append(chunk, size_t(got));
        else if (got == 0 || errno != EINTR)
            ended_ = true;
        return takeBuffered(line);
    }
    bool ended() const { return ended_ && buffer_.empty(); }

  private:
    bool takeBuffered(std::string& line)
    {
        size_t end = buffer_.find('\n');
        if (end == std::string::npos) {
            if (buffer_.size() < kMaxLineBytes && !(ended_ && !buffer_.empty()))
                return false;
            end = std::min(buffer_.size(), kMaxLineBytes);
        }
        line = buffer_.substr(0, end);
        buffer_.erase(0, std::min(buffer_.size(), end + 1));
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        return true;
    }

    std::string buffer_;
    bool ended_ = false;
};

std::string trimmed(const std::string& text)
{
    const size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

const char* loopModeText(int mode)
{
    switch (mode) {
    case 1:
        return "crossfade loop";
    case 2:
        return "backward-forward loop";
    default:
        return "no loop";
    }
}

class Session {
  public:
    explicit Session(const SemiSession& settings) : s_(settings), run_(settings.run) {}

    bool drive()
    {
        run_.start();
        while (!run_.finished()) {
            if (stopRequested())
                return endEarly();
            bool going = true;
            switch (run_.state()) {
            case RecordingRun::State::Waiting:
                going = startNextTake();
                break;
            case RecordingRun::State::Checking:
                going = checkTake();
                break;
            default:
                going = waitForTimers();
                break;
            }
            if (!going)
                return endEarly();
        }
        return true;
    }

  private:
    bool stopRequested() const { return s_.stopSignal != nullptr && s_.stopSignal->load() != 0; }

    bool endEarly()
    {
        run_.close();
        return false;
    }

    // A whole line, waiting as long as it takes; false at the end of the input or on a stop.
    bool readLine(std::string& line)
    {
        while (!input_.next(line, kInputPollMs))
            if (stopRequested() || input_.ended())
                return false;
        return true;
    }

    std::string keyText() const
    {
        const int note = run_.currentKey();
        const RecordEntry* entry = run_.currentEntry();
        return formatText("NOTE %d (%s) of \"%s\"", note, noteName(note).c_str(),
                          entry != nullptr ? entry->msl->name : "");
    }

    bool startNextTake()
    {
        if (s_.keepEveryTake) {
            std::cerr << "Next Key: " << keyText() << '\n';
        } else {
            std::cerr << "Next Key: " << keyText()
                      << ". Press Enter to start the countdown (q ends the run).\n";
            std::string line;
            if (!readLine(line) || trimmed(line) == "q")
                return false;
        }
        run_.startCountdown();
        if (s_.skipping == nullptr)
            std::cerr << "Countdown started: play the note when recording starts; press Enter "
                         "to stop the take.\n";
        return true;
    }

    // The countdown and the take: the run's timers, and in real time the Enter that stops
    // the take (or, during the countdown, goes back to waiting for the same key).
    bool waitForTimers()
    {
        const int64_t due = run_.nextDueMs();
        if (due < 0)
            return false; // a state that waits for no timer and no answer: nothing can follow
        if (s_.skipping != nullptr) {
            s_.skipping->advanceTo(due);
            run_.service();
            return true;
        }
        const int wait = int(std::clamp<int64_t>(due - s_.clock.nowMs(), 0, 20));
        std::string line;
        if (input_.next(line, wait)) {
            run_.stop();
            return true;
        }
        run_.service();
        return true;
    }

    void describeTake() const
    {
        const RecordEntry* entry = run_.currentEntry();
        if (entry == nullptr)
            return;
        const int note = run_.currentKey();
        const TGmsl_key& key = entry->msl->keys[note];
        const std::string file = keySampleFileName(*entry->project, *entry->msl, note);
        WaveFormat format;
        std::vector<uint8_t> data;
        std::string message;
        if (readWav(file, format, data, message) && format.nBlockAlign > 0 &&
            format.nSamplesPerSec > 0) {
            const ChannelLevels peaks = measureLevels(format, data.data(), data.size());
            const double seconds =
                double(data.size() / format.nBlockAlign) / double(format.nSamplesPerSec);
            std::cerr << formatText("Take of NOTE %d (%s): %.2f s, peak %.1f dBFS", note,
                                    noteName(note).c_str(), seconds, levelInDb(peaks.left));
            if (format.nChannels > 1)
                std::cerr << formatText(" left, %.1f dBFS right", levelInDb(peaks.right));
            std::cerr << '\n';
        } else {
            std::cerr << "The take cannot be read back: " << message << '\n';
        }
        std::cerr << formatText("Markers: Note In %d, Note Out %d, Release In %d, Release Out "
                                "%d, Loop In %d, Loop Out %d (%s)\n",
                                key.Note_In, key.Note_Out, key.Release_In, key.Release_Out,
                                key.Loop_In, key.Loop_Out, loopModeText(key.loopMode));
        std::cerr << "File: " << file << '\n';
    }

    bool checkTake()
    {
        describeTake();
        if (s_.keepEveryTake) {
            run_.keepTake("");
            return true;
        }
        std::string name;
        for (;;) {
            std::cerr << "Keep and record next (k), discard and re-record (d), name the key (n "
                         "NAME), prehear (p)"
                      << (name.empty() ? std::string() : " [Key Name: \"" + name + "\"]") << "? ";
            std::string line;
            if (!readLine(line))
                return false;
            line = trimmed(line);
            const std::string answer = line.substr(0, line.find(' '));
            if (answer == "k") {
                std::cerr << "Kept " << keyText()
                          << (name.empty() ? std::string() : " as \"" + name + "\"") << ".\n";
                run_.keepTake(name);
                return true;
            }
            if (answer == "d") {
                run_.discardTake();
                std::cerr << "Discarded: " << keyText() << " is recorded again.\n";
                return true;
            }
            if (answer == "n") {
                name = trimmed(line.substr(1)).substr(0, kNameSize - 1);
                if (name.empty())
                    std::cerr << "Give the name after n, e.g. n Piano C3.\n";
                continue;
            }
            if (answer == "p") {
                // A terminal run opens no audio output to play the take back on: offline
                // bouncing has no device, and a real-time run only listens.
                std::cerr << "Prehear is not available here: this run opens no audio output to "
                             "play the take on. Listen to the file above with a player of "
                             "your choice.\n";
                continue;
            }
            std::cerr << "Please answer k, d, n NAME or p.\n";
        }
    }

    const SemiSession& s_;
    RecordingRun& run_;
    InputLines input_;
};

} // namespace

bool driveSemiAutomatic(const SemiSession& session)
{
    Session terminal(session);
    return terminal.drive();
}

} // namespace tg::cli
