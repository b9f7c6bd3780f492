// New-record values of key records and Multi-Samples.
#include "core/Records.h"

namespace tg {

TGmsl_key makeNewKey(int note)
{
    TGmsl_key key;
    key.mapLow = static_cast<uint8_t>(note);
    key.mapHigh = static_cast<uint8_t>(note);
    return key;
}

TGmsl::TGmsl()
{
    for (int note = 0; note < kKeyCount; ++note)
        keys[note] = makeNewKey(note);
}

} // namespace tg
