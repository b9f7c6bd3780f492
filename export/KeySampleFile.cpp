// The name rule of Key-Sample files, joined with the platform separator.
#include "export/KeySampleFile.h"

#include "core/Message.h"
#include "core/NoteNames.h"
#include "core/Paths.h"

#include <cstring>

namespace tg {

std::string keySampleFilePath(const Project& project, const TGmsl& msl, int note)
{
    const std::string dataPath(project.dataPath, strnlen(project.dataPath, sizeof project.dataPath));
    const std::string projectName(project.name, strnlen(project.name, sizeof project.name));
    const std::string mslName(msl.name, strnlen(msl.name, sizeof msl.name));
    return joinPath(nativePath(dataPath),
                    formatText("%s - %s - %03d - %s.wav", projectName.c_str(), mslName.c_str(),
                               note, noteName(note).c_str()));
}

} // namespace tg
