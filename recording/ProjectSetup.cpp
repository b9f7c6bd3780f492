// Creating a Project from the project wizard's answers.
#include "recording/ProjectSetup.h"

#include "core/Model.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace tg {

Result checkSetupName(const Model& model, const std::string& name)
{
    if (name.empty())
        return Result::refused("Please enter a project name.");
    for (int i = 0; i < model.projectCount(); ++i)
        if (name == model.project(i).name)
            return Result::refused(
                "A project with that name already exists. Please enter a different name.");
    return Result::done();
}

Result checkSetupDataPath(const std::string& dataPath)
{
    if (dataPath.empty())
        return Result::refused("Please enter a non-empty path.");
    std::error_code error;
    if (!std::filesystem::is_directory(dataPath, error))
        return Result::refused("This path does not exist. Please enter a valid path.");
    return Result::done();
}

std::vector<VelocityRange> splitVelocities(int layers)
{
    std::vector<VelocityRange> ranges;
    if (layers <= 0)
        return ranges;
    const int base = 128 / layers;
    // Kept in single precision on purpose: the accumulator decides where the spare
    // velocities go, and its rounding is part of the result.
    const float frac = static_cast<float>(128 - base * layers) / static_cast<float>(layers);
    float r = 0.0f;
    int previousHigh = -1;
    for (int i = 0; i < layers; ++i) {
        const int low = previousHigh + 1;
        const float a = r + frac;
        const bool spare = a >= 1.0f;
        const int high = previousHigh + base + (spare ? 1 : 0);
        r = spare ? a - 1.0f : a;
        ranges.push_back({low, high});
        previousHigh = high;
    }
    return ranges;
}

void keyboardRangeFor(int keyCount, uint16_t& low, uint16_t& high)
{
    switch (keyCount) {
    case 37:
        low = 48;
        high = 84;
        break;
    case 49:
        low = 36;
        high = 84;
        break;
    case 61:
        low = 36;
        high = 96;
        break;
    case 76:
        low = 28;
        high = 103;
        break;
    case 88:
    case 128:
        low = 21;
        high = 108;
        break; // 128 keys give the 88-key range, as designed
    default:
        low = 0;
        high = 127;
        break;
    }
}

namespace {

void applyAutoLoop(RecordSettings& rs, const ProjectSetupRecord& setup)
{
    rs.loopsearchlength = setup.complexity == LoopComplexity::Intermediate ? 3.0 : 1.5;
    rs.loopstart = setup.loopStartPercent;
    rs.loopoutsearchstart = rs.loopstart + (100.0 - rs.loopstart) * 0.45;
    copyText(rs.xfadetype, "Exponential^2");
    copyText(rs.bfxfadetype, "Exponential^2");
    switch (setup.complexity) {
    case LoopComplexity::Simple:
        rs.xfadelength = 0.75;
        break;
    case LoopComplexity::Intermediate:
        rs.xfadelength = 25.0;
        break;
    case LoopComplexity::Complex:
        rs.xfadelength = 24.5;
        rs.bfxfadelength = 25.0;
        break;
    }
}

void configureLayer(TGmsl& msl, const VelocityRange& range, const ProjectSetupRecord& setup)
{
    msl.range_start = range.low;
    msl.range_end = range.high;
    msl.MIDIoutAttackVelocity = static_cast<uint16_t>(range.high);
    copyText(msl.name, formatText("Velocity %d", range.high).c_str());

    const std::string& midiOut = setup.pluginRecording ? kPluginDeviceName : setup.midiOutDevice;
    const std::string& audioIn = setup.pluginRecording ? kPluginDeviceName : setup.audioInDevice;
    copyText(msl.MIDIoutDevice, midiOut.c_str());
    copyText(msl.AudioInDevice, audioIn.c_str());
    copyText(msl.AudioInFormat, setup.sampleFormat.c_str());
    // The channels are kept per device row; the hosted instrument has none.
    const size_t row = static_cast<size_t>(setup.audioInDeviceRow);
    if (!setup.pluginRecording && setup.audioInDeviceRow >= 0 && row < msl.audioInChannelL.size()) {
        msl.audioInChannelL[row] = setup.audioInChannelLeft;
        msl.audioInChannelR[row] = setup.audioInChannelRight;
    }
    msl.MIDIoutChannel = static_cast<uint16_t>(std::clamp(setup.midiChannel, 1, 16) - 1);
    msl.MIDIoutProgram = static_cast<uint16_t>(std::clamp(setup.midiProgram, 0, 127));
    msl.MIDIoutProgram_active = setup.midiProgram != 0 ? 1 : 0;

    keyboardRangeFor(setup.keyCount, msl.KBrangeIn, msl.KBrangeOut);
    RecordSettings& rs = msl.recordsettings;
    rs.notelength1 = setup.noteLength;
    rs.releaselength1 = setup.releaseLength;
    rs.autoloop = setup.autoLoop ? 1 : 0;
    if (setup.autoLoop)
        applyAutoLoop(rs, setup);

    const int step = std::max(1, setup.keyStep);
    for (int note = msl.KBrangeIn; note <= msl.KBrangeOut; note += step)
        msl.keys[note].keyState = 1;
}

} // namespace

Result createProjectFromSetup(Model& model, const ProjectSetupRecord& setup)
{
    const std::vector<VelocityRange> ranges = splitVelocities(setup.velocityLayers);
    if (ranges.size() > static_cast<size_t>(kMaxMultiSamples))
        return Result::refused(formatText("You cannot have more than %ld Multi-Samples.",
                                          static_cast<long>(kMaxMultiSamples)));
    Result result = model.newProject();
    if (!result.ok())
        return result;
    Project& project = *model.currentProject();
    copyText(project.name, setup.name.c_str());
    copyText(project.dataPath, setup.dataPath.c_str());
    for (const VelocityRange& range : ranges) {
        result = model.addMultiSample();
        if (!result.ok())
            return result;
        configureLayer(project.msl[project.currentMsl], range, setup);
    }
    project.currentMsl = 0;
    project.topMsl = 0;
    return Result::done();
}

} // namespace tg
