// The fake clock, take source and observer of the run's unit tests.
#include "recording/tests/FakeTakeSource.h"

#include <algorithm>
#include <cmath>

namespace tg::test {

int FakeTakeSource::prepare(const TGmsl&, std::string& message)
{
    ++prepareCount;
    if (failPrepare) {
        message = "Invalid device";
        return 0;
    }
    return 1;
}

int FakeTakeSource::arm(double seconds, std::string&)
{
    armedSeconds.push_back(seconds);
    armedAtMs.push_back(clock_.now);
    stopped_ = false;
    sent.clear();
    return 1;
}

bool FakeTakeSource::isRecording()
{
    if (armedAtMs.empty() || stopped_)
        return false;
    return clock_.now < armedAtMs.back() + int64_t(armedSeconds.back() * 1000.0);
}

void FakeTakeSource::sendMidi(const uint8_t* bytes, size_t count)
{
    sent.push_back({clock_.now, std::vector<uint8_t>(bytes, bytes + count)});
    history.push_back(sent.back());
}

TakeAudio FakeTakeSource::take()
{
    const int64_t armedAt = armedAtMs.back();
    const int64_t frames = int64_t(format.nSamplesPerSec * armedSeconds.back());
    // The recorder's buffer holds exactly the armed frames.
    buffer_.assign(size_t(frames) * format.nBlockAlign, 0);
    int64_t onFrame = -1, offFrame = frames;
    for (const SentMessage& message : sent) {
        const int64_t frame = (message.atMs - armedAt) * format.nSamplesPerSec / 1000;
        if ((message.bytes[0] & 0xF0) == 0x90)
            onFrame = frame + latencyFrames;
        else if ((message.bytes[0] & 0xF0) == 0x80 && onFrame >= 0 && offFrame == frames)
            offFrame = frame + latencyFrames;
    }
    if (!silent && onFrame >= 0) {
        // 440 Hz at half scale, fading out over 0.2 s after the Note Off.
        const int64_t fade = format.nSamplesPerSec / 5;
        for (int64_t f = onFrame; f < std::min(frames, offFrame + fade); ++f) {
            double level = 16000.0;
            if (f > offFrame)
                level *= 1.0 - double(f - offFrame) / double(fade);
            const double value =
                level * std::sin(2.0 * M_PI * 440.0 * double(f - onFrame) / format.nSamplesPerSec);
            const int16_t sample = int16_t(std::lrint(value));
            for (int c = 0; c < format.nChannels; ++c) {
                uint8_t* at = &buffer_[size_t(f) * format.nBlockAlign + size_t(c) * 2];
                at[0] = uint8_t(uint16_t(sample) & 0xFF);
                at[1] = uint8_t(uint16_t(sample) >> 8);
            }
        }
    }
    TakeAudio audio;
    audio.format = format;
    audio.data = &buffer_;
    audio.frames =
        stopped_ ? std::min<int64_t>(frames, (clock_.now - armedAt) * format.nSamplesPerSec / 1000)
                 : frames;
    audio.health.framesReceived = audio.frames;
    audio.health.framesExpected = audio.frames;
    audio.health.clocked = true;
    if (droppingTakes > 0) {
        --droppingTakes;
        audio.health.framesExpected += 512; // two periods of 256 lost in one xrun
        audio.health.inputOverflows = 1;
        audio.health.outputUnderflows = 1;
    }
    return audio;
}

bool RecordingObserver::logged(const std::string& text) const
{
    return std::find(lines.begin(), lines.end(), text) != lines.end();
}

namespace {

// Services the run at each due timer up to `untilMs` of clock time.
void serviceUntil(RecordingRun& run, FakeClock& clock, int64_t untilMs)
{
    while (!run.finished()) {
        const int64_t next = run.nextDueMs();
        if (next < 0 || next > untilMs)
            return;
        clock.now = std::max(clock.now, next);
        run.service();
    }
}

} // namespace

void runUntil(RecordingRun& run, FakeClock& clock, int64_t untilMs)
{
    serviceUntil(run, clock, untilMs);
    clock.now = std::max(clock.now, untilMs);
}

void runToEnd(RecordingRun& run, FakeClock& clock, int64_t limitMs)
{
    serviceUntil(run, clock, clock.now + limitMs);
}

} // namespace tg::test
