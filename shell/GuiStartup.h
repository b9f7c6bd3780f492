// Start-up of the desktop program: splash screen, style, core initialization with its log,
// the fatal box, the main window, the start-up projects and the projects named on the
// command line.
#pragma once

#include "core/Startup.h"

#include <QStringList>

#include <functional>
#include <memory>

class QApplication;
class QSplashScreen;

namespace tg {
class Model;
}

namespace tg::shell {

class MainWindow;

constexpr const char* kFatalErrorTitle = "Fatal Error";
constexpr const char* kFatalErrorText = "Could not initialize application. Shutting down.";

class GuiStartup {
  public:
    // The application must have been created with the attributes set by
    // setApplicationAttributes().
    GuiStartup(QApplication& app, Model& model);
    ~GuiStartup();

    // What the core initialization runs for the devices; by default the real device layer.
    void setHooks(StartupHooks hooks)
    {
        hooks_ = std::move(hooks);
        hasHooks_ = true;
    }
    // How long the splash stays up after a good initialization: `ticks` times `tickMs`.
    void setSplashDelay(int ticks, int tickMs);

    // Everything up to the event loop. Returns false after a failed initialization, when the
    // fatal box has been shown and the program ends with status 1.
    bool start(const QStringList& projectFiles);
    MainWindow* window() const { return window_.get(); }

  private:
    void showSplash();
    void splashMessage(const QString& text);
    void keepSplashUp();

    QApplication& app_;
    Model& model_;
    StartupHooks hooks_;
    bool hasHooks_ = false;
    int splashTicks_ = 50;
    int splashTickMs_ = 30;
    std::unique_ptr<QSplashScreen> splash_;
    std::unique_ptr<MainWindow> window_;
};

// Before the QApplication exists: the application attributes.
void setApplicationAttributes();

// The whole program: start-up, then the event loop. Returns the exit status.
int runTonegrabber(QApplication& app, const QStringList& projectFiles);

} // namespace tg::shell
