// Template and Korg exports: one ExportSession serves the writer's render requests.
#include "export/ExportTemplateFormats.h"

#include "export/ExportProgress.h"
#include "export/PipelineKeySource.h"
#include "export/korg/KorgKronos.h"

namespace tg {

void applyTagging(TemplateExporter& exporter, const ExportTagging& tagging, bool loopAll)
{
    exporter.setLoopAllSamples(loopAll);
    exporter.setCategory(tagging.category);
    exporter.setCreator(tagging.creator);
    exporter.setKeywords(tagging.keywords);
}

int runTemplateExport(const ExportJob& job, TemplateExporter& exporter,
                      const ExportServices& services, std::string& message)
{
    if (!services.writeWav) {
        message = job.nameLine + "illegal pointer (==NULL)";
        return 0;
    }
    ExportSession session(job, services);
    if (!session.begin(message))
        return 0;
    exporter.setProgress(reportExportProgress);
    exporter.setAbortFlag(&exportAbortFlag);
    PipelineKeySource source(session);
    if (!exporter.exportStep(source, serviceWavWriter(services), message) ||
        !exporter.finishStep(message))
        return 0;
    reportExportProgress(1.0, "");
    return 1;
}

int runKronosExport(const ExportJob& job, const std::string& destination, int projectNumber,
                    const ExportServices& services, std::string& message)
{
    ExportJob stereoAware = job;
    stereoAware.rendersPerKey = kronosIsStereo(job.settings) ? 2 : 1;
    ExportSession session(stereoAware, services);
    if (!session.begin(message))
        return 0;
    PipelineKeySource source(session);
    if (!TGexport_KORGKRONOS(destination, *job.project, job.mslIndices, job.settings, projectNumber,
                             source, message))
        return 0;
    reportExportProgress(1.0, "");
    return 1;
}

} // namespace tg
