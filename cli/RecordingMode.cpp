#include "cli/RecordingMode.h"

#include "core/IniKeys.h"
#include "core/Message.h"

#include <QSettings>
#include <QStringList>

#include <filesystem>

namespace tg::cli {

namespace {

constexpr const char* kSemiAutomaticProjects = "Cli/SemiAutomaticProjects";

// The same file under every spelling a user may give it.
QString fileKey(const std::string& projectFile)
{
    std::error_code error;
    std::filesystem::path path = std::filesystem::weakly_canonical(projectFile, error);
    if (error)
        path = std::filesystem::absolute(projectFile).lexically_normal();
    return QString::fromStdString(path.string());
}

} // namespace

int rememberSemiAutomatic(const std::string& projectFile, bool semi, std::string& message)
{
    QSettings settings(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
    QStringList files = settings.value(kSemiAutomaticProjects).toStringList();
    const QString key = fileKey(projectFile);
    // An automatic Project leaves the settings file alone unless an earlier one of that name
    // was semi-automatic.
    if (files.removeAll(key) == 0 && !semi)
        return 1;
    if (semi)
        files.append(key);
    if (files.isEmpty())
        settings.remove(kSemiAutomaticProjects);
    else
        settings.setValue(kSemiAutomaticProjects, files);
    settings.sync();
    if (settings.status() != QSettings::NoError)
        return setMessage(message, "Unable to write \"%s\"", ini::iniFilePath().c_str());
    return 1;
}

bool madeForSemiAutomatic(const std::string& projectFile)
{
    const QSettings settings(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
    return settings.value(kSemiAutomaticProjects).toStringList().contains(fileKey(projectFile));
}

} // namespace tg::cli
