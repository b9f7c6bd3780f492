// The menu entries of the further sampler formats (Decent Sampler, NN-XT, Montage, OP-1, Volca
// Sample, and the HALion, Blofeld and Microsampler entries refused with a reason), as the export
// runner calls them.
#pragma once

#include "export/ExportRunner.h"

#include <string>

namespace tg {

// Each takes the request, the settings word in force, the loop-only flag and the services,
// and returns 1, or 0 with the exporter's message.
int exportDecentPreset(Project& project, const ExportRequest& request, uint32_t settings,
                       bool loopOnly, const ExportServices& services, std::string& message);
int exportDecentLibrary(Project& project, const ExportRequest& request, uint32_t settings,
                        bool loopOnly, const ExportServices& services, std::string& message);
int exportNNXT(Project& project, const ExportRequest& request, uint32_t settings, bool loopOnly,
               const ExportServices& services, std::string& message);
// "(*.X7U)" writes a user file, "(*.X7L)" a library file.
int exportMontage(Project& project, const ExportRequest& request, uint32_t settings, bool loopOnly,
                  const ExportServices& services, std::string& message);
int exportVolca(Project& project, const ExportRequest& request, uint32_t settings, bool loopOnly,
                const ExportServices& services, std::string& message);
int exportOp1(Project& project, const ExportRequest& request, uint32_t settings, bool loopOnly,
              const ExportServices& services, std::string& message);
// The entries without an established layout: refused with the reason.
int exportHALion(Project& project, const ExportRequest& request, uint32_t settings, bool loopOnly,
                 const ExportServices& services, std::string& message);
int exportBlofeld(Project& project, const ExportRequest& request, uint32_t settings, bool loopOnly,
                  const ExportServices& services, std::string& message);
int exportMicrosampler(Project& project, const ExportRequest& request, uint32_t settings,
                       bool loopOnly, const ExportServices& services, std::string& message);

} // namespace tg
