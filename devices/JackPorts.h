// Port names of a JACK client, as PortAudio's JACK host API sees the client: one device whose
// input channels are the client's output ports.
#pragma once

#include <string>
#include <vector>

namespace tg {

// The short names ("out_1", after the "client:" part) of `client`'s output ports, in the
// order PortAudio connects them to an input stream's channels. Empty when no JACK server
// answers or the client has no such ports.
std::vector<std::string> jackOutputPortNames(const std::string& client);

} // namespace tg
