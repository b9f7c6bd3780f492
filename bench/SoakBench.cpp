// bench_soak [MINUTES] [FOLDER]: a recording run of MINUTES (default 30) on the sound chain,
// e.g.  scripts/sound-chain.sh exec --state /tmp/chain -- build/release/bench/bench_soak 30
// Prints a line per pass on stderr and the figures on stdout; exit status 1 when the soak
// could not go on.
#include "bench/SoakRun.h"

#include <QCoreApplication>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include <unistd.h>

int main(int argc, char** argv)
{
    tg::SoakOptions options;
    if (argc > 1)
        options.minutes = std::atof(argv[1]);
    if (options.minutes <= 0.0) {
        std::cerr << "usage: bench_soak [MINUTES] [FOLDER]\n";
        return 2;
    }
    if (argc > 2) {
        options.folder = argv[2];
    } else {
        options.folder =
            (std::filesystem::temp_directory_path() / ("tg-soak-" + std::to_string(getpid())))
                .string();
    }
    std::filesystem::create_directories(options.folder);
    setenv("TONEGRABBER_HOME", options.folder.c_str(), 1);
    int qtArgc = 1;
    QCoreApplication app(qtArgc, argv);
    tg::SoakFigures figures;
    const bool ok =
        tg::runSoak(options, figures, [](const std::string& line) { std::cerr << line << '\n'; });
    std::cout << tg::soakReport(figures) << "takes and project in " << options.folder << '\n';
    return ok ? 0 : 1;
}
