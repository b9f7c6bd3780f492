// Playback's conversion of a Key-Sample part to the output format.
#include "devices/SampleConversion.h"

#include "audiofile/SampleConverter.h"

namespace tg {

// Note, loop and release are converted one by one, so each keeps its own boundaries and no
// loop points need to follow. Two channels become one by mixing, and the rate changes by
// linear interpolation: cheap, and fit for listening (export uses the better modes). The
// converter refuses parts of fewer than 16 frames; playback then fails with its message.
int convertForPlayback(std::vector<uint8_t>& data, const WaveFormat& source,
                       const WaveFormat& destination, std::string& msg)
{
    WaveFormat from = source;
    WaveFormat to = destination;
    std::string converterMessage;
    if (convertSamples(data, from, to, nullptr, nullptr, ChannelMode::Mix, ResampleMode::Linear,
                       &converterMessage))
        return 1;
    msg = converterMessage;
    return 0;
}

} // namespace tg
