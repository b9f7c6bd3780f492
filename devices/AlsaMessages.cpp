// A do-nothing ALSA error handler, installed once.
#include "devices/AlsaMessages.h"

#include <alsa/asoundlib.h>

namespace tg {

namespace {

void dropAlsaMessage(const char*, int, const char*, int, const char*, ...) {}

} // namespace

void silenceAlsaLibraryMessages()
{
    snd_lib_error_set_handler(dropAlsaMessage);
}

} // namespace tg
