#include "cli/InputChannelsArgument.h"

#include "devices/InputChannelChoice.h"

#include <cstdio>

namespace tg::cli {

bool chooseChannelsFromArgument(const DeviceTables& tables, TGmsl& msl, const std::string& text,
                                std::string& message)
{
    const std::string bad = "Bad argument --input-channels '" + text + "': ";
    int left = 0, right = 0;
    char extra = 0;
    const int count = std::sscanf(text.c_str(), "%d,%d%c", &left, &right, &extra);
    if ((count != 1 && count != 2) || left < 1 || (count == 2 && right < 1) ||
        (count == 1 && text.find_first_not_of("0123456789") != std::string::npos)) {
        message = bad + "expected LEFT or LEFT,RIGHT, channel numbers from 1.";
        return false;
    }
    std::string reason;
    if (!chooseInputChannels(tables, msl, left - 1, count == 2 ? right - 1 : -1, reason)) {
        message = bad + reason + ".";
        return false;
    }
    return true;
}

} // namespace tg::cli
