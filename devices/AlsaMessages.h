// Keeps the ALSA library's own diagnostics off stderr.
#pragma once

namespace tg {

// ALSA prints a screenful of configuration errors whenever PortAudio or RtMidi probe a
// machine without sound cards or a sequencer (containers, CI). The device layer reports
// what matters through its own messages, so the library's chatter is dropped. Idempotent.
void silenceAlsaLibraryMessages();

} // namespace tg
