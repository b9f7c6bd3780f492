// Folder look-ups. QtCore is used only for the Documents location and the executable's path.
#include "core/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <cstdlib>

#ifndef TONEGRABBER_DATADIR
#define TONEGRABBER_DATADIR "/usr/local/share/tonegrabber"
#endif

namespace tg {

std::string joinPath(const std::string& folder, const std::string& name)
{
    if (folder.empty())
        return name;
    if (folder.back() == '/')
        return folder + name;
    return folder + '/' + name;
}

std::string nativePath(const std::string& storedPath)
{
    std::string path = storedPath;
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string userDataFolder()
{
    if (const char* home = std::getenv("TONEGRABBER_HOME"); home && *home)
        return home;
    QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (documents.isEmpty())
        documents = QDir::homePath();
    return joinPath(documents.toStdString(), "Corvane/Tonegrabber6");
}

std::string programFolder()
{
    return QDir::currentPath().toStdString();
}

static std::string executableFolder()
{
    // Works without a QCoreApplication instance: read the link the kernel keeps.
    QFileInfo self(QStringLiteral("/proc/self/exe"));
    const QString target = self.symLinkTarget();
    return target.isEmpty() ? std::string() : QFileInfo(target).absolutePath().toStdString();
}

std::string resourcesFolder()
{
    const std::string candidates[] = {
        joinPath(programFolder(), "Resources"),
        joinPath(executableFolder(), "Resources"),
        joinPath(executableFolder(), "../share/tonegrabber/Resources"),
        joinPath(TONEGRABBER_DATADIR, "Resources"),
    };
    for (const std::string& candidate : candidates)
        if (QFileInfo(QString::fromStdString(candidate)).isDir())
            return QDir::cleanPath(QString::fromStdString(candidate)).toStdString();
    return {};
}

} // namespace tg
