// Which device channels an input stream opens and which of them a take keeps.
#pragma once

#include "devices/AudioStreamConfig.h"

namespace tg {

// Worked out on the GUI thread when the stream opens, read by the record callback: the
// stream delivers `streamChannels` interleaved channels, and take channel i (left, right)
// comes from device channel `source[i]`.
struct InputChannelMap {
    int streamChannels = 0;
    int source[2] = {0, 1};
    int takeChannels = 0;

    // The block is already the take's layout: nothing to pick.
    bool identity() const
    {
        return streamChannels == takeChannels && source[0] == 0 &&
               (takeChannels < 2 || source[1] == 1);
    }
};

// The map for `config` on a device with `deviceChannels` input channels. Mono takes the
// chosen left channel; stereo starts from channels 0 and 1 and takes each chosen channel the
// device really has. The stream opens as many channels as the highest source needs, and at
// least the take's own count, so a device without a choice opens as it always did.
InputChannelMap inputChannelMap(const AudioStreamConfig& config, int deviceChannels);

} // namespace tg
