// The input channels a Multi-Sample records from: one stored choice per entry of the audio
// input table, the one that counts being its own device's.
#pragma once

#include "core/Records.h"
#include "devices/DeviceTables.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

enum class ChannelSide { Left, Right };

// The key under which listeners hear of a changed choice: "msl_AudioInChannelL" / "...R".
const char* inputChannelKey(ChannelSide side);

// The names of the channels `device` offers, without the closing "Default" entry; empty when
// it offers no choice (one or two channels) or is not in the table.
std::vector<std::string> choosableInputChannels(const DeviceTables& tables,
                                                const std::string& device);

// The channel stored for `msl`'s own device, -1 when none is chosen.
int32_t storedInputChannel(const DeviceTables& tables, const TGmsl& msl, ChannelSide side);

// Stores `channel` (-1: not chosen) for `msl`'s own device; a list shorter than the table
// grows with -1. False when the device is not in the table.
bool storeInputChannel(const DeviceTables& tables, TGmsl& msl, ChannelSide side, int32_t channel);

// Chooses device channels `left` and `right` (0-based; right -1 for a mono take) for
// `msl`'s own device. False with `msg` when the device offers no choice or lacks a channel.
bool chooseInputChannels(const DeviceTables& tables, TGmsl& msl, int32_t left, int32_t right,
                         std::string& msg);

} // namespace tg
