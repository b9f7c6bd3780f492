// --input-channels LEFT[,RIGHT]: the channels of a multi-channel audio input that `record`
// takes and `levels --input` measures.
#pragma once

#include "core/Records.h"

#include <cstdint>
#include <string>

namespace tg {
struct DeviceTables;
}

namespace tg::cli {

// Chooses the channels `text` names (1-based, "3" or "3,4") for `msl`'s own device.
// Returns kExitOk, or kExitBadUsage after printing "Bad argument --input-channels '...': ..."
// when the text is malformed or the device lacks a channel.
int chooseChannelsFromArgument(const DeviceTables& tables, TGmsl& msl, const std::string& text);

} // namespace tg::cli
