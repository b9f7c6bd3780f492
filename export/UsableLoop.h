// Whether a Key-Sample's loop can go into a sample file: writers that store loop points as
// frame numbers need both ends inside the audio, the end after the start.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tg {

// True when the Key-Sample has a loop (`hasLoop`) whose frames `loopStart`..`loopEnd`
// (inclusive) lie inside audio of `frames` frames, with the end after the start.
inline bool isLoopUsable(bool hasLoop, int32_t loopStart, int32_t loopEnd, size_t frames)
{
    return hasLoop && loopStart >= 0 && loopEnd > loopStart && size_t(loopEnd) < frames;
}

} // namespace tg
