// Reading and storing a Multi-Sample's chosen input channels.
#include "devices/InputChannelChoice.h"

#include <cstring>

namespace tg {

namespace {

template <typename Msl> auto& listOf(Msl& msl, ChannelSide side)
{
    return side == ChannelSide::Left ? msl.audioInChannelL : msl.audioInChannelR;
}

int rowOf(const DeviceTables& tables, const TGmsl& msl)
{
    return audioInTableIndex(
        tables,
        std::string(msl.AudioInDevice, strnlen(msl.AudioInDevice, sizeof msl.AudioInDevice)));
}

} // namespace

const char* inputChannelKey(ChannelSide side)
{
    return side == ChannelSide::Left ? "msl_AudioInChannelL" : "msl_AudioInChannelR";
}

std::vector<std::string> choosableInputChannels(const DeviceTables& tables,
                                                const std::string& device)
{
    const int row = audioInTableIndex(tables, device);
    if (row < 0)
        return {};
    std::vector<std::string> names = tables.audioIn[size_t(row)].channels;
    if (!names.empty())
        names.pop_back(); // "Default"
    return names;
}

int32_t storedInputChannel(const DeviceTables& tables, const TGmsl& msl, ChannelSide side)
{
    const int row = rowOf(tables, msl);
    const std::vector<int32_t>& list = listOf(msl, side);
    return row >= 0 && size_t(row) < list.size() ? list[size_t(row)] : -1;
}

bool storeInputChannel(const DeviceTables& tables, TGmsl& msl, ChannelSide side, int32_t channel)
{
    const int row = rowOf(tables, msl);
    if (row < 0)
        return false;
    std::vector<int32_t>& list = listOf(msl, side);
    if (list.size() <= size_t(row))
        list.resize(tables.audioIn.size() > size_t(row) ? tables.audioIn.size() : size_t(row) + 1,
                    -1);
    list[size_t(row)] = channel;
    return true;
}

bool chooseInputChannels(const DeviceTables& tables, TGmsl& msl, int32_t left, int32_t right,
                         std::string& msg)
{
    const std::string device(msl.AudioInDevice,
                             strnlen(msl.AudioInDevice, sizeof msl.AudioInDevice));
    const std::vector<std::string> names = choosableInputChannels(tables, device);
    if (names.empty()) {
        msg = "the audio input device '" + device + "' has no channels to choose from";
        return false;
    }
    for (int32_t channel : {left, right})
        if (channel >= int32_t(names.size()) || channel < -1) {
            msg = "the audio input device '" + device + "' has channels 1 to " +
                  std::to_string(names.size());
            return false;
        }
    storeInputChannel(tables, msl, ChannelSide::Left, left);
    storeInputChannel(tables, msl, ChannelSide::Right, right);
    return true;
}

} // namespace tg
