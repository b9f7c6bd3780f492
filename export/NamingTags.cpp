// Tag expansion for exported file names.
#include "export/NamingTags.h"

#include "core/Message.h"
#include "core/NoteNames.h"

#include <cstring>

namespace tg {
namespace {

// Record names are fixed buffers; read them only up to their size.
std::string fieldText(const char* field, size_t size)
{
    return std::string(field, strnlen(field, size));
}

bool startsWithAt(const std::string& text, size_t pos, const char* tag)
{
    return text.compare(pos, std::strlen(tag), tag) == 0;
}

} // namespace

std::string expandNamingTags(const Project& project, const TGmsl& msl, long mslIndex, int note,
                             const std::string& pattern)
{
    const int key = (note >= 0 && note < kKeyCount) ? note : 0;
    const struct {
        const char* tag;
        std::string value;
    } tags[] = {
        {"<#prj#>", fieldText(project.name, sizeof project.name)},
        {"<#ms#>", fieldText(msl.name, sizeof msl.name)},
        {"<#msi#>", formatText("%02ld", mslIndex)},
        {"<#mn#>", formatText("%03ld", static_cast<long>(note))},
        {"<#kn#>", fieldText(msl.keys[key].name, sizeof msl.keys[key].name)},
        // Note names are plain ASCII, so they are already Latin-1 bytes.
        {"<#n#>", noteName(note)},
    };
    std::string out;
    out.reserve(pattern.size() + 64);
    size_t pos = 0;
    while (pos < pattern.size()) {
        bool replaced = false;
        if (pattern[pos] == '<') {
            for (const auto& entry : tags) {
                if (startsWithAt(pattern, pos, entry.tag)) {
                    out += entry.value;
                    pos += std::strlen(entry.tag);
                    replaced = true;
                    break;
                }
            }
        }
        if (!replaced)
            out += pattern[pos++];
    }
    return out;
}

std::string namingSchemeWarnings(const std::string& pattern)
{
    auto has = [&](const char* tag) { return pattern.find(tag) != std::string::npos; };
    std::string warnings;
    // Each text stands under the other's condition; the dialog has always paired them so.
    if (!has("<#ms#>") && !has("<#msi#>"))
        warnings += "WARNING: The naming scheme does not contain \"<#mn#>\" or \"<#n#>\". "
                    "This might result in name conflicts.\r\n\r\n";
    if (!has("<#mn#>") && !has("<#n#>"))
        warnings += "WARNING: the AIFF - Name does not contain the name (\"<#ms#>\") or the "
                    "index (\"<#msi#>\")"
                    "of the Multi-Sample(s).  This might result in name conflicts.\r\n"
                    "Add \"<#ms#>\") and/or \"<#msi#>\" if the Project has more than one "
                    "Multi-Sample."
                    "\r\n\r\n";
    return warnings;
}

} // namespace tg
