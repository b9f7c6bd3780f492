// Asking the JACK server for a client's ports through a short-lived client of our own.
#include "devices/JackPorts.h"

#include <jack/jack.h>

namespace tg {

namespace {

// PortAudio finds a device's ports by a regular expression on "<client>:"; a client name
// with expression characters must match itself only.
std::string escaped(const std::string& text)
{
    std::string out;
    for (char c : text) {
        if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos)
            out += '\\';
        out += c;
    }
    return out;
}

} // namespace

std::vector<std::string> jackOutputPortNames(const std::string& client)
{
    std::vector<std::string> names;
    jack_status_t status;
    jack_client_t* self = jack_client_open("Tonegrabber-ports", JackNoStartServer, &status);
    if (self == nullptr)
        return names;
    // Audio ports only, as PortAudio counts a JACK device's channels.
    const char** ports = jack_get_ports(self, (escaped(client) + ":.*").c_str(),
                                        JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
    const std::string prefix = client + ":";
    for (size_t i = 0; ports != nullptr && ports[i] != nullptr; ++i) {
        const std::string full = ports[i];
        names.push_back(full.compare(0, prefix.size(), prefix) == 0 ? full.substr(prefix.size())
                                                                    : full);
    }
    if (ports != nullptr)
        jack_free(ports);
    jack_client_close(self);
    return names;
}

} // namespace tg
