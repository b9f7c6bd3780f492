// Tonegrabber.ini.
#include "shell/IniFile.h"

#include "core/IniKeys.h"

namespace tg::shell {

std::unique_ptr<QSettings> openIniFile()
{
    return std::make_unique<QSettings>(QString::fromStdString(ini::iniFilePath()),
                                       QSettings::IniFormat);
}

} // namespace tg::shell
