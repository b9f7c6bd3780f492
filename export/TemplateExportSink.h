// Runs the template exporters (Bitwig and the others that pull their Key-Samples one by one)
// over the shared export pipeline, which renders, converts and gains every Key-Sample.
#pragma once

#include "export/ExportPipeline.h"
#include "export/templates/TemplateExporter.h"

#include <string>

namespace tg {

// The pipeline hands every finished Key-Sample to a sink that keeps it; after the last one,
// while the working markers are still in place, the exporter's export and finish steps run
// and pull the kept Key-Samples. Returns 1, or 0 with the pipeline's or exporter's message.
int runTemplateExport(BaseExporter& exporter, const ExportJob& job, const ExportServices& services,
                      std::string& message);

// Writes a rendered sample as a WAV file, with its loop and root key when it has a loop.
int writeRenderedWav(const std::string& path, const RenderedSample& sample, std::string& message);

} // namespace tg
