// Playback's conversion of a Key-Sample part to the output format.
#include "devices/SampleConversion.h"

#include "core/Message.h"

namespace tg {

// The sample converter of the audio-file layer is connected here, and only here: playback
// converts note, loop and release parts separately (so the loop keeps its own boundaries)
// with mixed channels and linear resampling, the cheap mode fit for listening. Until that
// converter is part of the build, a part whose format differs from the output is refused
// with a message rather than played at the wrong speed.
int convertForPlayback(std::vector<uint8_t>& data, const WaveFormat& source,
                       const WaveFormat& destination, std::string& msg)
{
    (void)data;
    return setMessage(msg,
                      "convert sample error: no converter from %u Hz, %u channel(s), %u bit to "
                      "%u Hz, %u channel(s), %u bit",
                      unsigned(source.nSamplesPerSec), unsigned(source.nChannels),
                      unsigned(source.wBitsPerSample), unsigned(destination.nSamplesPerSec),
                      unsigned(destination.nChannels), unsigned(destination.wBitsPerSample));
}

} // namespace tg
