// Rendering a take block by block with the MIDI messages at their frames.
#include "devices/OfflineBouncer.h"

#include "core/Message.h"
#include "devices/FloatFrames.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace tg {

namespace {

constexpr uint32_t kBounceBlock = 1024;
// A tail below this peak (about -80 dB) counts as gone.
constexpr float kQuietPeak = 1.0e-4f;
// The longest tail rendered away between takes, in seconds: an instrument that never falls
// quiet (a drone) must not hold the run up.
constexpr double kLongestTail = 5.0;

int checkNote(const BounceNote& note, const AudioStreamConfig& format, int32_t instrumentRate,
              std::string& msg)
{
    if (note.note < 0 || note.note > 127 || note.channel < 0 || note.channel > 15 ||
        note.attackVelocity < 1 || note.attackVelocity > 127 || note.releaseVelocity < 0 ||
        note.releaseVelocity > 127)
        return setMessage(msg, "Cannot bounce note %d on channel %d with velocities %d/%d",
                          note.note, note.channel + 1, note.attackVelocity, note.releaseVelocity);
    if (!(note.noteLength >= 0.0) || !(note.releaseLength >= 0.0) || !(note.leadIn >= 0.0) ||
        note.noteLength + note.releaseLength + note.leadIn > 3600.0)
        return setMessage(msg, "Cannot bounce a note of %g s with %g s release", note.noteLength,
                          note.releaseLength);
    const bool bitsOk =
        format.bits == 8 || format.bits == 16 || format.bits == 24 || format.bits == 32;
    if (!bitsOk || (format.channels != 1 && format.channels != 2) || format.sampleRate <= 0)
        return setMessage(msg, "Cannot bounce into %d Hz, %d channel(s), %d bits",
                          int(format.sampleRate), int(format.channels), int(format.bits));
    if (format.sampleRate != instrumentRate)
        return setMessage(msg, "The instrument runs at %d Hz, the take is %d Hz",
                          int(instrumentRate), int(format.sampleRate));
    return 1;
}

float blockPeak(const float* left, const float* right, uint32_t frames)
{
    float peak = 0.0f;
    for (uint32_t i = 0; i < frames; ++i)
        peak = std::max({peak, std::fabs(left[i]), std::fabs(right[i])});
    return peak;
}

} // namespace

int64_t bounceFrames(const BounceNote& note, int32_t sampleRate)
{
    const double seconds = note.leadIn + note.noteLength + note.releaseLength;
    const float exact = static_cast<float>(sampleRate) * static_cast<float>(seconds);
    return exact > 0.0f ? static_cast<int64_t>(exact) : 0;
}

int64_t bounceNoteOnFrame(const BounceNote& note, int32_t sampleRate)
{
    return static_cast<int64_t>(std::llround(note.leadIn * sampleRate));
}

int64_t bounceNoteOffFrame(const BounceNote& note, int32_t sampleRate)
{
    return bounceNoteOnFrame(note, sampleRate) +
           static_cast<int64_t>(std::llround(note.noteLength * sampleRate));
}

int bounceNote(HostedInstrument& instrument, const BounceNote& note,
               const AudioStreamConfig& format, std::vector<uint8_t>& take, std::string& msg)
{
    if (!checkNote(note, format, instrument.sampleRate(), msg))
        return 0;
    const int64_t frames = bounceFrames(note, format.sampleRate);
    const int64_t frameBytes = bytesPerFrame(format);
    try {
        take.assign(size_t(frames * frameBytes), 0);
    } catch (const std::bad_alloc&) {
        return setMessage(msg, "Unable to allocate memory for a take of %lld frames",
                          static_cast<long long>(frames));
    }

    std::vector<float> left(kBounceBlock);
    std::vector<float> right(kBounceBlock);
    instrument.resetNotes();
    const int64_t longestTail = int64_t(kLongestTail * format.sampleRate);
    for (int64_t settled = 0; settled < longestTail; settled += kBounceBlock) {
        instrument.render(left.data(), right.data(), kBounceBlock);
        if (blockPeak(left.data(), right.data(), kBounceBlock) < kQuietPeak)
            break;
    }

    const uint8_t channelBits = uint8_t(note.channel & 0x0f);
    const int64_t noteOn = std::min(bounceNoteOnFrame(note, format.sampleRate), frames);
    const int64_t noteOff = std::min(bounceNoteOffFrame(note, format.sampleRate), frames);
    bool onSent = false;
    bool offSent = false;
    int64_t position = 0;
    while (position < frames) {
        if (!onSent && position >= noteOn) {
            instrument.sendMidi(0x90 | channelBits, uint8_t(note.note),
                                uint8_t(note.attackVelocity));
            onSent = true;
        }
        if (onSent && !offSent && position >= noteOff) {
            instrument.sendMidi(0x80 | channelBits, uint8_t(note.note),
                                uint8_t(note.releaseVelocity));
            offSent = true;
        }
        // Blocks end at the next event so that each message lands on its frame.
        int64_t end = std::min(frames, position + int64_t(kBounceBlock));
        if (!onSent)
            end = std::min(end, noteOn);
        else if (!offSent)
            end = std::min(end, noteOff);
        const auto count = uint32_t(end - position);
        instrument.render(left.data(), right.data(), count);
        encodeFloatFrames(left.data(), right.data(), count, format.channels, format.bits,
                          take.data() + position * frameBytes);
        position = end;
    }
    // A take that ends before Note Off (a zero release with rounding) still lets go.
    if (!offSent)
        instrument.sendMidi(0x80 | channelBits, uint8_t(note.note), uint8_t(note.releaseVelocity));
    return 1;
}

} // namespace tg
