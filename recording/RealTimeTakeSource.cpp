// Recording takes from the audio input while the MIDI output plays the notes.
#include "recording/RealTimeTakeSource.h"

#include "core/Message.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/MidiManager.h"
#include "devices/MidiPorts.h"

namespace tg {

int RealTimeTakeSource::prepare(const TGmsl& msl, std::string& message)
{
    if (audio::inputDeviceIndex(msl.AudioInDevice, message) < 0)
        return 0;
    if (!audio_.apply(msl, message))
        return 0;
    if (!audio::inputOpen()) {
        message = "Could not find an audio device with this name.\n";
        return 0;
    }
    midi_.currentMultiSampleChanged(msl);
    if (!midi_.lastMessage().empty()) {
        message = midi_.lastMessage();
        return 0;
    }
    return 1;
}

WaveFormat RealTimeTakeSource::inputFormat() const
{
    const AudioStreamConfig input = audio::currentInputConfig();
    return makeWaveFormat(uint32_t(input.sampleRate), uint16_t(input.channels),
                          uint16_t(input.bits));
}

int RealTimeTakeSource::arm(double seconds, std::string& message)
{
    if (!audio::startRecording(seconds)) {
        message = formatText("unable to allocate memory for a recording of %g seconds", seconds);
        return 0;
    }
    return 1;
}

bool RealTimeTakeSource::isRecording()
{
    return audio::isRecording();
}

void RealTimeTakeSource::stopRecording()
{
    audio::stopRecording();
}

TakeAudio RealTimeTakeSource::take()
{
    const RecordedTake recorded = audio::recordBuffer();
    TakeAudio take;
    take.format =
        makeWaveFormat(uint32_t(recorded.format.sampleRate), uint16_t(recorded.format.channels),
                       uint16_t(recorded.format.bits));
    take.data = recorded.data;
    take.frames = recorded.frames;
    take.health = recorded.health;
    return take;
}

void RealTimeTakeSource::sendMidi(const uint8_t* bytes, size_t count)
{
    midi::sendMidiMessage(bytes, count);
}

} // namespace tg
