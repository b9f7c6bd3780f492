// Key-Sample playback through a real JACK graph (written next).
