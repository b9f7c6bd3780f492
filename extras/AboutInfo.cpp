// Library versions as the loaded libraries report them, so the about box tells what really runs.
#include "extras/AboutInfo.h"

#include <QtGlobal>

#include <alsa/asoundlib.h>
#include <fluidsynth.h>
#include <jack/jack.h>
#include <portaudio.h>
#include <rtmidi/RtMidi.h>
#include <soxr.h>
#include <zip.h>

#include <cstring>

namespace tg {

namespace {

// "libsoxr-0.1.3" -> "0.1.3"
std::string withoutPrefix(const char* text, const char* prefix)
{
    if (text == nullptr)
        return {};
    const size_t length = std::strlen(prefix);
    return std::strncmp(text, prefix, length) == 0 ? std::string(text + length) : text;
}

std::string nonNull(const char* text)
{
    return text == nullptr ? std::string() : std::string(text);
}

std::string portAudioVersion()
{
    const PaVersionInfo* info = Pa_GetVersionInfo();
    return info == nullptr
               ? std::string()
               : std::to_string(info->versionMajor) + "." + std::to_string(info->versionMinor) +
                     "." + std::to_string(info->versionSubMinor);
}

} // namespace

std::vector<LibraryInfo> usedLibraries()
{
    return {
        {"Qt", qVersion(), "LGPL-3.0-only", "windows, settings, network"},
        {"PortAudio", portAudioVersion(), "MIT", "audio devices"},
        {"JACK", nonNull(jack_get_version_string()), "LGPL-2.1-or-later",
         "audio and MIDI ports, sound server"},
        {"ALSA", nonNull(snd_asoundlib_version()), "LGPL-2.1-or-later", "sound cards, MIDI"},
        {"RtMidi", RtMidi::getVersion(), "MIT", "MIDI ports"},
        {"FluidSynth", fluid_version_str(), "LGPL-2.1-or-later", "SoundFont instruments"},
        // lilv has no run-time version query: the version built against.
        {"lilv", TG_LILV_VERSION, "ISC", "LV2 instruments"},
        {"libsoxr", withoutPrefix(soxr_version(), "libsoxr-"), "LGPL-2.1-or-later",
         "high-quality resampling"},
        {"libzip", zip_libzip_version(), "BSD-3-Clause", "zip archives"},
    };
}

std::string programVersion()
{
    return TONEGRABBER_VERSION;
}

std::string buildDescription()
{
#if defined(__clang__)
    std::string compiler = std::string("Clang ") + __clang_version__;
#elif defined(__GNUC__)
    std::string compiler = std::string("GCC ") + __VERSION__;
#else
    std::string compiler = "unknown compiler";
#endif
#ifdef NDEBUG
    const char* type = "Release";
#else
    const char* type = "Debug";
#endif
    return compiler + ", " + type + ", built " + __DATE__;
}

} // namespace tg
