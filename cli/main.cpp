// tonegrabber-cli: the headless front end over the same functions as the GUI.
#include "cli/CliApp.h"
#include "cli/Commands.h"

int main(int argc, char** argv)
{
    tg::cli::CliApp app;
    tg::cli::addAllCommands(app);
    return app.run(argc, argv);
}
