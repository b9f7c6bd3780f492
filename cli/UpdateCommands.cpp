// `check-updates`: the update check of the Help menu, from the command line.
#include "cli/CliApp.h"
#include "cli/Commands.h"

#include "extras/UpdateCheck.h"

#include <QCoreApplication>

#include <iostream>
#include <memory>

namespace tg::cli {

namespace {

struct UpdateArgs {
    std::string url;
    bool json = false;
};

int runCheck(const UpdateArgs& args)
{
    // The network classes need an application object; the command line has none otherwise.
    std::unique_ptr<QCoreApplication> application;
    static int argc = 1;
    static char name[] = "tonegrabber-cli";
    static char* argv[] = {name, nullptr};
    if (QCoreApplication::instance() == nullptr)
        application = std::make_unique<QCoreApplication>(argc, argv);
    const QUrl url = args.url.empty() ? updateCheckUrl() : QUrl(QString::fromStdString(args.url));
    const UpdateCheckResult result = checkForUpdatesNow(url);
    using Outcome = UpdateCheckResult::Outcome;
    const bool answered = result.outcome == Outcome::Newer || result.outcome == Outcome::Latest;
    if (!answered)
        return fail(result.message.toStdString(), args.json);
    if (args.json)
        printJson({{"newer", result.outcome == Outcome::Newer},
                   {"version", result.newestVersion.toStdString()},
                   {"running", runningVersion().toStdString()},
                   {"message", result.message.toStdString()}});
    else
        std::cout << result.message.toStdString() << '\n';
    return kExitOk;
}

} // namespace

void addUpdateCommands(CliApp& app)
{
    auto args = std::make_shared<UpdateArgs>();
    CLI::App* c = app.addCommand("check-updates",
                                 std::string("Asks the update address (") + kUpdateUrlKey +
                                     " in Tonegrabber.ini) whether a newer version exists",
                                 [args] { return runCheck(*args); });
    c->add_option("--url", args->url, "ask this address instead");
    c->add_flag("--json", args->json, "print one JSON document on stdout");
}

} // namespace tg::cli
