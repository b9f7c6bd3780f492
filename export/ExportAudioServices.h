// The export's audio services bound to the program's own reader, converter, writers,
// renderer and level meter.
#pragma once

#include "export/ExportServices.h"

namespace tg {

// Reader, converter and the WAV and AIFF writers of the audio file layer.
void useAudioFileServices(ExportServices& services);

// Renderer (with the part after the loop, click/pop fades from the preferences) and the
// peak level of the analysis layer.
void useAnalysisServices(ExportServices& services);

// Every service bound to the program's own functions: what the front ends export with.
ExportServices defaultExportServices();

} // namespace tg
