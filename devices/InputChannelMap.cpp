// Choosing the device channels of a take.
#include "devices/InputChannelMap.h"

#include <algorithm>

namespace tg {

InputChannelMap inputChannelMap(const AudioStreamConfig& config, int deviceChannels)
{
    InputChannelMap map;
    map.takeChannels = config.channels;
    map.streamChannels = config.channels;
    auto available = [deviceChannels](int32_t channel) {
        return channel >= 0 && channel < deviceChannels;
    };
    if (config.channels == 1 && available(config.channelLeft)) {
        map.source[0] = config.channelLeft;
    } else if (config.channels == 2) {
        if (available(config.channelLeft)) {
            map.source[0] = config.channelLeft;
            // Left alone chosen: the pair it starts (or the left again on the last channel),
            // never a channel of another pair.
            map.source[1] =
                available(config.channelLeft + 1) ? config.channelLeft + 1 : config.channelLeft;
        }
        if (available(config.channelRight))
            map.source[1] = config.channelRight;
    }
    for (int i = 0; i < map.takeChannels && i < 2; ++i)
        map.streamChannels = std::max(map.streamChannels, map.source[i] + 1);
    return map;
}

} // namespace tg
