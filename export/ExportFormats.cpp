// The dispatch table of the export menu, in the order its keys are tried.
#include "export/ExportFormats.h"

#include "export/ExportSettings.h"

#include <algorithm>
#include <cctype>

namespace tg {
namespace {

constexpr uint32_t kAll = 0xFFFFFFFF;
constexpr uint32_t kDefault = 0x20408;     // 44.1 kHz, 16 Bit, Stereo
constexpr uint32_t kDefault48k = 0x20410;  // 48 kHz, 16 Bit, Stereo
constexpr uint32_t kDefaultMono = 0x40408; // 44.1 kHz, 16 Bit, Mono (mix L and R)

// The order matters: "(*.wav)" must come after the keys of formats whose texts might also
// name WAV, and "wav-files" before it.
const ExportFormatInfo kFormats[] = {
    {"(*.sf2)", ExportFormat::SoundFont2, 0xFFFFF4FC, kDefault},
    {"(*.sxt)", ExportFormat::NNXT, 0xFFFFFCFC, kDefault},
    {"(*.sfz)", ExportFormat::Sfz, kAll, kDefault},
    {"(*.kmp)", ExportFormat::Kronos, kAll, kDefault},
    {"(*.x7u)", ExportFormat::Montage, 0xFFFFF4FF, kDefault},
    {"(*.x7l)", ExportFormat::Montage, 0xFFFFF4FF, kDefault},
    {"(*.msmpl_bank)", ExportFormat::Microsampler, 0xFFFFF49E, kDefault48k},
    {"volca", ExportFormat::Volca, 0xFFFCFFFF, kDefault},
    {"halion", ExportFormat::HALion, kAll, kDefault},
    {"blofeld", ExportFormat::Blofeld, kAll, kDefault},
    {"(*.multisample)", ExportFormat::Bitwig, kAll, kDefault},
    {"deluge", ExportFormat::Deluge, kAll, kDefault},
    {"quantum", ExportFormat::Quantum, kAll, kDefault},
    {"prophet", ExportFormat::ProphetX, 0xFFFFF490, kDefault48k},
    {"wav-files", ExportFormat::WavFiles, kAll, kDefault},
    {"(*.wav)", ExportFormat::SamplerWav, kAll, kDefault},
    {"aiff-files", ExportFormat::Aiff, kAll, kDefault},
    {"(*.dspreset)", ExportFormat::DecentPreset, kAll, kDefault},
    {"(*.dslibrary)", ExportFormat::DecentLibrary, kAll, kDefault},
    // The OP-1 menu entry exports too: the kit is the instrument format its sampler loads.
    {"op-1", ExportFormat::OP1, 0xFFFCF408, kDefaultMono},
};

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

} // namespace

const std::vector<std::string>& exportMenuTexts()
{
    static const std::vector<std::string> texts = {
        "WAV-Files",
        "WAV-Files (Loop only)",
        "AIFF-Files",
        "AIFF-Files (Loop only)",
        "Camel Audio Alchemy (*.sfz)",
        "Cakewalk Dimension (*.sfz)",
        "rgc:audio (*.sfz)",
        "SoundFont2 (*.sf2)",
        "Apple Logic Pro EXS 24 (*.sf2)",
        "Maz Studio Tools VSampler (*.sf2)",
        "Yellow Tools Independence (*.SF2)",
        "Propellerhead Software Reason NN-XT (*.sxt)",
        "NI Kontakt (*.sxt)",
        "Steinberg HALion (*.xml)",
        "Waldorf Blofeld (*.xml)",
        "Korg Kronos (*.KMP)",
        "Korg Microsampler (*.msmpl_bank)",
        "Volca Sample",
        "Bitwig Studio (*.multisample)",
        "Synthstrom Deluge (*.xml)",
        "Waldorf Quantum and Iridium (*.map)",
        "Sequential Prophet-X (*.zip)",
        "Yamaha Montage (*.X7U)",
        "Yamaha Montage (*.X7L)",
        "Tascam Gigastudio (*.wav)",
        "Emu Emulator X (*.wav)",
        "MOTU Machfive (*.wav)",
        "Decent Sampler (*.dspreset)",
        "Decent Sampler Library (*.dslibrary)",
        "OP-1 (*.aif)",
    };
    return texts;
}

const ExportFormatInfo* findExportFormat(const std::string& menuText)
{
    const std::string lower = lowerCase(menuText);
    for (const ExportFormatInfo& info : kFormats)
        if (lower.find(info.key) != std::string::npos)
            return &info;
    return nullptr;
}

std::string menuTextForShortKey(const std::string& keyOrText)
{
    static const struct {
        const char* key;
        const char* text;
    } kShortKeys[] = {
        {"wav", "WAV-Files"},
        {"wav-loop", "WAV-Files (Loop only)"},
        {"aiff", "AIFF-Files"},
        {"aiff-loop", "AIFF-Files (Loop only)"},
        {"sfz", "Cakewalk Dimension (*.sfz)"},
        {"sf2", "SoundFont2 (*.sf2)"},
        {"bitwig", "Bitwig Studio (*.multisample)"},
        {"deluge", "Synthstrom Deluge (*.xml)"},
        {"prophetx", "Sequential Prophet-X (*.zip)"},
        {"quantum", "Waldorf Quantum and Iridium (*.map)"},
        {"kronos", "Korg Kronos (*.KMP)"},
        {"decent", "Decent Sampler (*.dspreset)"},
        {"decent-library", "Decent Sampler Library (*.dslibrary)"},
        {"op1", "OP-1 (*.aif)"},
        {"volca", "Volca Sample"},
        {"nnxt", "Propellerhead Software Reason NN-XT (*.sxt)"},
        {"halion", "Steinberg HALion (*.xml)"},
        {"blofeld", "Waldorf Blofeld (*.xml)"},
        {"montage-x7u", "Yamaha Montage (*.X7U)"},
        {"montage-x7l", "Yamaha Montage (*.X7L)"},
        {"microsampler", "Korg Microsampler (*.msmpl_bank)"},
    };
    for (const auto& entry : kShortKeys)
        if (keyOrText == entry.key)
            return entry.text;
    return keyOrText;
}

bool isLoopOnlyMenuText(const std::string& menuText)
{
    return lowerCase(menuText).find("loop only") != std::string::npos;
}

uint32_t correctedSettingsWord(const ExportFormatInfo& format, bool hasLastWord, uint32_t lastWord)
{
    using namespace exportbits;
    uint32_t word = hasLastWord ? lastWord : format.defaultWord;
    const uint32_t mask = format.allowedMask;
    if ((word & kFrequencyMask & mask) == 0)
        word = (word & ~kFrequencyMask) | kFrequency44100;
    if ((word & kDepthMask & mask) == 0)
        word = (word & ~kDepthMask) | kDepth16;
    if ((word & kChannelsMask & mask) == 0)
        // Formats that take no stereo (Volca, OP-1) fall back to the mix of both channels.
        word = (word & ~kChannelsMask) |
               ((mask & kChannelsStereo) == 0 ? kChannelsMonoMix : kChannelsStereo);
    return word;
}

} // namespace tg
