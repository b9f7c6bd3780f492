// Deriving each Project's export request from the one choice made for all of them.
#include "export/ExportAllProjects.h"

#include "core/Paths.h"
#include "export/ExportFormats.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace tg {

std::string menuTextExtension(const std::string& menuText)
{
    const size_t open = menuText.find("(*.");
    if (open == std::string::npos)
        return "";
    const size_t close = menuText.find(')', open);
    if (close == std::string::npos)
        return "";
    return menuText.substr(open + 3, close - open - 3);
}

ExportRequest requestForProjectInTurn(const ExportRequest& once, const Project& project, int turn,
                                      int projectNumber)
{
    ExportRequest request = once;
    const std::string name(project.name, strnlen(project.name, sizeof project.name));
    request.projectNumber = projectNumber;
    request.mslIndices.clear(); // a selection of Multi-Samples belongs to one Project
    request.tagging.programName.clear();
    request.tagging.folder.clear();
    request.tagging.programNumber = once.tagging.programNumber + turn;
    const ExportFormatInfo* info = findExportFormat(once.menuText);
    if (info != nullptr && !exportsIntoFolder(info->format)) {
        const std::string extension = menuTextExtension(once.menuText);
        request.destination =
            joinPath(once.destination, extension.empty() ? name : name + "." + extension);
    }
    return request;
}

std::string allProjectsNamingWarning(const std::string& pattern)
{
    if (pattern.find("<#prj#>") != std::string::npos)
        return "";
    return "WARNING: The naming scheme does not contain \"<#prj#>\": the files of each Project "
           "will replace those of the Project before.\r\n\r\n";
}

} // namespace tg
