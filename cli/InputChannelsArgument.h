// --input-channels LEFT[,RIGHT]: the channels of a multi-channel audio input that `record`
// takes and `levels --input` measures.
#pragma once

#include "core/Records.h"

#include <string>

namespace tg {
struct DeviceTables;
}

namespace tg::cli {

// Chooses the channels `text` names (1-based, "3" or "3,4") for `msl`'s own device.
// False with `message` ("Bad argument --input-channels '...': ...") when the text is
// malformed or the device lacks a channel: a usage error.
bool chooseChannelsFromArgument(const DeviceTables& tables, TGmsl& msl, const std::string& text,
                                std::string& message);

} // namespace tg::cli
