// Picks the implementation that plays an instrument choice.
#include "devices/HostedInstrument.h"

#include "devices/Lv2Instrument.h"
#include "devices/SoundFontInstrument.h"

#include "core/Message.h"

namespace tg {

std::unique_ptr<HostedInstrument> openHostedInstrument(const InstrumentSpec& choice,
                                                       int32_t sampleRate, std::string& msg)
{
    if (sampleRate < 8000 || sampleRate > 192000) {
        setMessage(msg, "Cannot host an instrument at %d Hz", int(sampleRate));
        return nullptr;
    }
    if (choice.kind == InstrumentSpec::Kind::Lv2)
        return openLv2Instrument(choice, sampleRate, msg);
    return openSoundFontInstrument(choice, sampleRate, msg);
}

} // namespace tg
