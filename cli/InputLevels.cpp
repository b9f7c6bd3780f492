// The live input level.
#include "cli/InputLevels.h"

#include "analysis/Levels.h"
#include "cli/CliApp.h"
#include "cli/InputChannelsArgument.h"
#include "core/Message.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "devices/InputChannelChoice.h"
#include "devices/InputPeakTap.h"
#include "audiofile/RecordFormats.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <thread>

namespace tg::cli {

namespace {

constexpr int kPollMs = 100;
constexpr int kLineMs = 500;

std::string dbText(float peak)
{
    return peak > 0.0f ? formatText("%.1f dB", levelInDb(peak)) : std::string("-inf dB");
}

nlohmann::json dbValue(float peak)
{
    return peak > 0.0f ? nlohmann::json(levelInDb(peak)) : nlohmann::json(nullptr);
}

// Closes the streams and shuts the engine down however the measurement ends; the tap is
// removed only after the streams are closed, so no callback can still be calling it.
class OpenInput {
  public:
    explicit OpenInput(InputPeakTap& tap) : tap_(tap) {}
    ~OpenInput()
    {
        std::string msg;
        audio::closeStreams(msg);
        audio::removeLevelListener(&tap_);
        audio::terminate();
    }

  private:
    InputPeakTap& tap_;
};

} // namespace

int runInputLevels(const InputLevelSource& source, double seconds, bool json, bool quiet)
{
    if (source.device.empty() || source.device == kNoAudioInEntry ||
        source.device == kVstPluginEntry)
        return fail(formatText("The audio input \"%s\" is no device: there is nothing to "
                               "measure.",
                               source.device.c_str()),
                    json);
    const RecordFormatRow* format = findRecordFormat(source.format.c_str());
    if (format == nullptr)
        return fail(formatText("Unknown recording format \"%s\".", source.format.c_str()), json);

    std::string msg;
    if (audio::initialize(msg) != 1)
        return fail(msg, json);
    InputPeakTap tap;
    OpenInput open(tap);
    const int32_t device = audio::inputDeviceIndex(source.device, msg);
    if (device < 0)
        return fail(formatText("Could not find the audio input \"%s\".", source.device.c_str()),
                    json);
    AudioStreamConfig input{device,           -1,   -1, int32_t(format->rate), format->bits,
                            format->channels, -1.0f};
    if (!source.channels.empty()) {
        DeviceTables tables;
        if (buildAudioDeviceTables(tables, msg) != 1)
            return fail(msg, json);
        TGmsl msl;
        std::snprintf(msl.AudioInDevice, sizeof msl.AudioInDevice, "%s", source.device.c_str());
        if (!chooseChannelsFromArgument(tables, msl, source.channels, msg)) {
            fail(msg, json);
            return kExitBadUsage;
        }
        input.channelLeft = storedInputChannel(tables, msl, ChannelSide::Left);
        input.channelRight = storedInputChannel(tables, msl, ChannelSide::Right);
    }
    const AudioStreamConfig noOutput{-1, -1, -1, int32_t(format->rate), format->bits, 2, -1.0f};
    audio::addLevelListener(&tap);
    if (audio::openStreams(input, noOutput, msg) != 1 || audio::startStreams(msg) != 1)
        return fail(msg, json);
    if (!quiet && !json)
        std::cerr << formatText("Listening to \"%s\" (%s) for %.1f s ...\n", source.device.c_str(),
                                format->name, seconds);

    float highest[2] = {0.0f, 0.0f};
    float line[2] = {0.0f, 0.0f};
    const auto start = std::chrono::steady_clock::now();
    const auto end = start + std::chrono::milliseconds(int64_t(seconds * 1000.0));
    auto nextLine = start + std::chrono::milliseconds(kLineMs);
    while (std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kPollMs));
        float first = 0.0f;
        float second = 0.0f;
        tap.take(first, second);
        line[0] = std::max(line[0], first);
        line[1] = std::max(line[1], second);
        if (std::chrono::steady_clock::now() >= nextLine) {
            if (!json)
                std::cout << "L " << dbText(line[0]) << "  R " << dbText(line[1]) << std::endl;
            highest[0] = std::max(highest[0], line[0]);
            highest[1] = std::max(highest[1], line[1]);
            line[0] = line[1] = 0.0f;
            nextLine += std::chrono::milliseconds(kLineMs);
        }
    }
    highest[0] = std::max(highest[0], line[0]);
    highest[1] = std::max(highest[1], line[1]);
    if (tap.blocks() == 0)
        return fail(
            formatText("No audio arrived from \"%s\" in %.1f s.", source.device.c_str(), seconds),
            json);
    if (json) {
        printJson({{"device", source.device},
                   {"format", format->name},
                   {"seconds", seconds},
                   {"blocks", tap.blocks()},
                   {"left", highest[0]},
                   {"right", highest[1]},
                   {"leftDb", dbValue(highest[0])},
                   {"rightDb", dbValue(highest[1])}});
    } else {
        std::cout << formatText("Peak of \"%s\": L %s, R %s", source.device.c_str(),
                                dbText(highest[0]).c_str(), dbText(highest[1]).c_str())
                  << std::endl;
    }
    return kExitOk;
}

} // namespace tg::cli
