// Start-up of the desktop program.
#include "shell/GuiStartup.h"

#include "core/Model.h"
#include "devices/DeviceTables.h"
#include "recording/StartupWiring.h"
#include "shell/ActionTable.h"
#include "shell/KeyPlayback.h"
#include "shell/MainWindow.h"
#include "shell/dialogs/UpdateCheckDialog.h"
#include "shell/ProjectFileFlow.h"
#include "shell/TonegrabberStyle.h"

#include <QAction>
#include <QApplication>
#include <QMessageBox>
#include <QScreen>
#include <QSplashScreen>
#include <QThread>

#include <vector>

// The splash and icon images are compiled into this library.
static void initResources()
{
    Q_INIT_RESOURCE(tonegrabber);
}

namespace tg::shell {

namespace {

const char* const kIconPath = ":/icons/Bitmaps/Icons/png/Tonegrabber_Icon";
const char* const kSplashPath = ":/splashes/Bitmaps/Splashes/Tonegrabber_Splash";

QString versionText()
{
    return QStringLiteral("Version ") + QStringLiteral(TONEGRABBER_VERSION);
}

} // namespace

void setApplicationAttributes()
{
    QApplication::setAttribute(Qt::AA_DisableWindowContextHelpButton);
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
}

GuiStartup::GuiStartup(QApplication& app, Model& model) : app_(app), model_(model) {}

GuiStartup::~GuiStartup() = default;

void GuiStartup::setSplashDelay(int ticks, int tickMs)
{
    splashTicks_ = ticks;
    splashTickMs_ = tickMs;
}

void GuiStartup::showSplash()
{
    QString splashPath = QString::fromLatin1(kSplashPath);
    const bool highDpi = QGuiApplication::primaryScreen() &&
                         QGuiApplication::primaryScreen()->devicePixelRatio() > 1.0;
    if (highDpi)
        splashPath += QStringLiteral("_HDPI");
    QPixmap pixmap(splashPath + QStringLiteral(".png"));
    if (highDpi)
        pixmap.setDevicePixelRatio(2.0);
    splash_ = std::make_unique<QSplashScreen>(pixmap, Qt::WindowStaysOnTopHint);
    splash_->setObjectName(QStringLiteral("splash"));
    splash_->show();
    splashMessage(QStringLiteral("Start Initialization..."));
}

void GuiStartup::splashMessage(const QString& text)
{
    splash_->showMessage(text + QLatin1Char('\n') + versionText(),
                         Qt::AlignBottom | Qt::AlignHCenter, Qt::white);
    app_.processEvents();
}

void GuiStartup::keepSplashUp()
{
    for (int tick = 0; tick < splashTicks_; ++tick) {
        app_.processEvents();
        QThread::msleep(static_cast<unsigned long>(splashTickMs_));
    }
}

bool GuiStartup::start(const QStringList& projectFiles)
{
    initResources();
    qRegisterMetaType<std::vector<unsigned char>>("vectorOfUchar");
    QApplication::setOrganizationName(QStringLiteral("QtProject"));
    QApplication::setApplicationName(QStringLiteral("Application Example"));
    QApplication::setApplicationVersion(QStringLiteral(TONEGRABBER_VERSION));
    QApplication::setWindowIcon(QIcon(QString::fromLatin1(kIconPath) + QStringLiteral(".png")));

    showSplash();
    installTonegrabberStyle(app_);

    const CoreFolders folders = determineCoreFolders();
    StartupHooks hooks = hasHooks_ ? hooks_ : deviceStartupHooks(deviceTables());
    hooks.progress = [this](const std::string& step) {
        splashMessage(QString::fromStdString(step));
    };
    std::string message;
    if (!initializeCore(model_, folders, hooks, message)) {
        splash_->close();
        QMessageBox::critical(nullptr, QString::fromLatin1(kFatalErrorTitle),
                              QString::fromLatin1(kFatalErrorText));
        return false;
    }
    keepSplashUp();
    splash_->close();

    window_ = std::make_unique<MainWindow>(model_);
    // With the real device layer up, keys play on the preferences' output and MIDI input.
    if (!hasHooks_)
        window_->keyPlayback().openDevices();
    app_.installEventFilter(window_.get());
    window_->show();
    window_->projectFiles().openStartupProjects(folders);
    checkForUpdatesAtStartup(window_.get()); // in the background: start-up never waits for it
    if (model_.preferences().showPrjWizardAtStartup) {
        QAction* wizard = window_->actions().action(QStringLiteral("openProjectWizard"));
        if (wizard->isEnabled())
            wizard->trigger();
    }
    if (!projectFiles.isEmpty())
        window_->projectFiles().openFiles(projectFiles);
    return true;
}

int runTonegrabber(QApplication& app, const QStringList& projectFiles)
{
    GuiStartup startup(app, Model::instance());
    if (!startup.start(projectFiles))
        return 1;
    return app.exec();
}

} // namespace tg::shell
