// The export menu: its texts, the exporter behind each, and each format's allowed settings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// The exporters the menu dispatches to.
enum class ExportFormat {
    SoundFont2,
    NNXT,
    Sfz,
    Kronos,
    Montage,
    Microsampler,
    Volca,
    HALion,
    Blofeld, // the HALion XML writer, with an import hint afterwards
    Bitwig,
    Deluge,
    Quantum,
    ProphetX,
    WavFiles,
    SamplerWav, // the "(*.wav)" entries of other samplers: WAV files too
    Aiff,
    DecentPreset,  // a ".dspreset" beside its "Samples" folder
    DecentLibrary, // the same, packed as a ".dslibrary" archive
    OP1,           // drum kit AIFF files with their JSON description
};

// One row of the dispatch table: the lower-case key looked for in the menu text.
struct ExportFormatInfo {
    const char* key;
    ExportFormat format;
    uint32_t allowedMask; // a set bit allows that value of the Export Settings word
    uint32_t defaultWord; // preselected when no word has been used yet
};

// Every menu text of "Export selected Project as ..." that starts an export, in menu order.
const std::vector<std::string>& exportMenuTexts();

// The format of a menu text: the first key of the dispatch table contained in the
// lower-cased text decides. Null when no key matches (such entries start no export).
const ExportFormatInfo* findExportFormat(const std::string& menuText);

// The CLI's short keys ("wav", "sf2", ...) as menu texts; a text that is no short key is
// returned unchanged.
std::string menuTextForShortKey(const std::string& keyOrText);

// True when the menu text asks for the loop-only variant ("... (Loop only)").
bool isLoopOnlyMenuText(const std::string& menuText);

// The word to preselect: `lastWord` (or the format's default when `hasLastWord` is false)
// with every field the format does not allow replaced by its fallback value.
uint32_t correctedSettingsWord(const ExportFormatInfo& format, bool hasLastWord, uint32_t lastWord);

} // namespace tg
