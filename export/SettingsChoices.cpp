// The settings dialog's choices and the check of a word against a format's mask.
#include "export/SettingsChoices.h"

#include "core/Message.h"
#include "export/ExportFormats.h"
#include "export/ExportSettings.h"

namespace tg {

using namespace exportbits;

const std::vector<SettingsGroup>& settingsGroups()
{
    static const std::vector<SettingsGroup> groups = {
        {"frequency",
         "Frequency",
         kFrequencyMask,
         {{kFrequencySame, "Same as Key-Sample"},
          {kFrequency11025, "11.025 KHz"},
          {kFrequency22050, "22.05 KHz"},
          {kFrequency44100, "44.1 KHz"},
          {kFrequency48000, "48 KHz"},
          {kFrequency96000, "96 KHz"},
          {kFrequency192000, "192 KHz"}}},
        {"depth",
         "Bit Depth",
         kDepthMask,
         {{kDepthSame, "Same as Key-Sample"},
          {kDepth8, "8 Bit"},
          {kDepth16, "16 Bit"},
          {kDepth24, "24 Bit"}}},
        {"channels",
         "Channels",
         kChannelsMask,
         {{kChannelsSame, "Same as Key-Sample"},
          {kChannelsStereo, "Stereo"},
          {kChannelsMonoMix, "Mono (mix L and R)"},
          {kChannelsMonoLeft, "Mono (only L)"},
          {kChannelsMonoRight, "Mono (only R)"}}},
    };
    return groups;
}

const std::vector<SettingsSwitch>& settingsSwitches()
{
    static const std::vector<SettingsSwitch> switches = {
        {"highQualityResampling", "High Quality Resampling (recommended)", kResamplingMask,
         kResamplingOff, kResamplingHigh},
        {"onlyUseLoops", "Only use Loops (if available)", kLoopOnly, 0, kLoopOnly},
        {"adjustLevels", "Adjust Samples' Levels according\nto Velocity Mapping (recommended)",
         kLevelsMask, kLevelsOff, kLevelsAdjust},
        {"removeAfterLoopOut", "Remove Audio after Loop-Out (recommended)", kTailMask, kTailKeep,
         kTailRemove},
    };
    return switches;
}

uint32_t chosenValue(const SettingsGroup& group, uint32_t word)
{
    const uint32_t bits = word & group.fieldMask;
    for (const SettingsChoice& choice : group.choices)
        if (bits == choice.value)
            return choice.value;
    return 0;
}

namespace {

std::string allowedTexts(const SettingsGroup& group, uint32_t mask)
{
    std::string texts;
    for (const SettingsChoice& choice : group.choices)
        if (isChoiceAllowed(mask, choice.value))
            texts += (texts.empty() ? "\"" : ", \"") + std::string(choice.text) + "\"";
    return texts;
}

} // namespace

int checkSettingsWord(uint32_t mask, const std::string& formatName, uint32_t word,
                      std::string& message)
{
    for (const SettingsGroup& group : settingsGroups()) {
        const uint32_t value = chosenValue(group, word);
        if (value == 0)
            return setMessage(message,
                              "The Export Settings word 0x%08X holds no single %s value (bits "
                              "0x%08X); %s allows %s.",
                              word, group.name, word & group.fieldMask, formatName.c_str(),
                              allowedTexts(group, mask).c_str());
        if (!isChoiceAllowed(mask, value)) {
            const char* text = "";
            for (const SettingsChoice& choice : group.choices)
                if (choice.value == value)
                    text = choice.text;
            return setMessage(message,
                              "The Export Settings word 0x%08X is not allowed for %s: %s \"%s\" "
                              "is not offered (allowed: %s).",
                              word, formatName.c_str(), group.name, text,
                              allowedTexts(group, mask).c_str());
        }
    }
    return 1;
}

uint32_t preselectedSettingsWord(const ExportFormatInfo& format, bool hasLastWord,
                                 uint32_t lastWord)
{
    uint32_t word = correctedSettingsWord(format, hasLastWord, lastWord);
    for (const SettingsGroup& group : settingsGroups()) {
        const uint32_t value = chosenValue(group, word);
        if (value != 0 && isChoiceAllowed(format.allowedMask, value))
            continue;
        for (const SettingsChoice& choice : group.choices)
            if (isChoiceAllowed(format.allowedMask, choice.value)) {
                word = (word & ~group.fieldMask) | choice.value;
                break;
            }
    }
    return word;
}

} // namespace tg
