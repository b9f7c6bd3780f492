// The window and dialog state file Tonegrabber.ini, opened by its path in the user data folder.
#pragma once

#include <QSettings>

#include <memory>

namespace tg::shell {

std::unique_ptr<QSettings> openIniFile();

} // namespace tg::shell
