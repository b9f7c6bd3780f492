// The export's audio services bound to the program's own reader, converter, writers,
// renderer and level meter.
#pragma once

#include "export/ExportServices.h"

namespace tg {

// Reader, converter and the WAV and AIFF writers of the audio file layer.
void useAudioFileServices(ExportServices& services);

} // namespace tg
