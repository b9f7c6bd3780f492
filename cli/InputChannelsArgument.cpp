#include "cli/InputChannelsArgument.h"

#include "cli/CliApp.h"
#include "devices/InputChannelChoice.h"

#include <cstdio>
#include <iostream>

namespace tg::cli {

int chooseChannelsFromArgument(const DeviceTables& tables, TGmsl& msl, const std::string& text)
{
    const std::string bad = "Bad argument --input-channels '" + text + "': ";
    int left = 0, right = 0;
    char extra = 0;
    const int count = std::sscanf(text.c_str(), "%d,%d%c", &left, &right, &extra);
    if ((count != 1 && count != 2) || left < 1 || (count == 2 && right < 1) ||
        (count == 1 && text.find_first_not_of("0123456789") != std::string::npos)) {
        std::cerr << bad << "expected LEFT or LEFT,RIGHT, channel numbers from 1.\n";
        return kExitBadUsage;
    }
    std::string message;
    if (!chooseInputChannels(tables, msl, left - 1, count == 2 ? right - 1 : -1, message)) {
        std::cerr << bad << message << ".\n";
        return kExitBadUsage;
    }
    return kExitOk;
}

} // namespace tg::cli
