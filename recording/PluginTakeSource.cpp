// Recording the hosted instrument in real time through the ring buffer.
#include "recording/PluginTakeSource.h"

#include "core/Message.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/HostedInstrument.h"

namespace tg {

PluginTakeSource::~PluginTakeSource()
{
    host_.stop();
}

int PluginTakeSource::prepare(const TGmsl& msl, std::string& message)
{
    if (!audio_.apply(msl, message))
        return 0;
    if (!audio::outputOpen() || !audio::pluginInput())
        return setMessage(message, "Please select a valid audio out device to sample your plugin.");
    const AudioStreamConfig output = audio::currentOutputConfig();
    // Reopened streams emptied the ring; the host carries on unless the format changed.
    if (host_.running() && sameConfig(output, hostFormat_))
        return 1;
    std::unique_ptr<HostedInstrument> instrument = host_.stop();
    if (instrument == nullptr || instrument->sampleRate() != output.sampleRate)
        instrument = openHostedInstrument(spec_, output.sampleRate, message);
    if (instrument == nullptr)
        return 0;
    if (!host_.start(std::move(instrument), output, audio::player(), message))
        return 0;
    hostFormat_ = output;
    return 1;
}

WaveFormat PluginTakeSource::inputFormat() const
{
    return waveFormatOf(audio::currentInputConfig());
}

int PluginTakeSource::arm(double seconds, std::string& message)
{
    if (!audio::startRecording(seconds))
        return setMessage(message, "unable to allocate memory for a recording of %g seconds",
                          seconds);
    return 1;
}

bool PluginTakeSource::isRecording()
{
    return audio::isRecording();
}

void PluginTakeSource::stopRecording()
{
    audio::stopRecording();
}

TakeAudio PluginTakeSource::take()
{
    const RecordedTake recorded = audio::recordBuffer();
    TakeAudio take;
    take.format = waveFormatOf(recorded.format);
    take.data = recorded.data;
    take.frames = recorded.frames;
    take.health = recorded.health;
    return take;
}

void PluginTakeSource::sendMidi(const uint8_t* bytes, size_t count)
{
    if (count >= 1)
        host_.sendMidi(bytes[0], count > 1 ? bytes[1] : 0, count > 2 ? bytes[2] : 0);
}

} // namespace tg
