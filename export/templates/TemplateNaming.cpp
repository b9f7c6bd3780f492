// Naming-tag expansion for the file names the template exporters write.
#include "export/templates/TemplateNaming.h"

#include "core/Message.h"
#include "core/NoteNames.h"
#include "export/templates/RenderedSample.h"

#include <cstring>

namespace tg {

std::string expandNameTemplate(const Project& project, int mslIndex, int ordinal, int note,
                               const std::string& nameTemplate)
{
    const TGmsl& msl = project.msl[mslIndex];
    const struct {
        const char* tag;
        std::string value;
    } tags[] = {
        {"<#prj#>", project.name},
        {"<#msi#>", formatText("%02ld", static_cast<long>(ordinal))},
        {"<#ms#>", msl.name},
        {"<#mn#>", formatText("%03ld", static_cast<long>(note))},
        {"<#kn#>", msl.keys[note].name},
        {"<#n#>", noteName(note)},
    };
    std::string out;
    for (size_t i = 0; i < nameTemplate.size();) {
        bool replaced = false;
        if (nameTemplate[i] == '<') {
            for (const auto& tag : tags) {
                const size_t length = std::strlen(tag.tag);
                if (nameTemplate.compare(i, length, tag.tag) == 0) {
                    out += tag.value;
                    i += length;
                    replaced = true;
                    break;
                }
            }
        }
        if (!replaced)
            out.push_back(nameTemplate[i++]);
    }
    return out;
}

std::vector<int> exportedKeys(const TGmsl& msl)
{
    std::vector<int> keys;
    const int low = msl.KBrangeIn;
    const int high = msl.KBrangeOut < kKeyCount ? msl.KBrangeOut : kKeyCount - 1;
    for (int note = low; note <= high; ++note)
        if (msl.keys[note].keyState && msl.keys[note].hasAudio)
            keys.push_back(note);
    return keys;
}

} // namespace tg
