// `play`: a Key-Sample on the preferences' audio output, as a key held for a while and let go.
// `tone`: the tuning oscillator's reference tone on the same output, for a while.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"
#include "core/IniKeys.h"
#include "core/Model.h"
#include "core/NoteNames.h"
#include "core/ProjectFile.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "devices/KeySamplePlayback.h"
#include "devices/MidiPorts.h"
#include "devices/TuningOscillator.h"
#include "recording/StartupWiring.h"

#include <QCoreApplication>
#include <QSettings>

#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <memory>
#include <thread>

namespace tg::cli {

namespace {

struct PlayOptions {
    std::string project;
    int key = -1;
    int multisample = -1;
    double hold = 1.0;
};

struct ToneOptions {
    int note = TuningTone{}.note;
    std::string wave = "sine";
    int volume = TuningTone{}.volumeDb;
    double seconds = 3.0;
};

std::atomic<int> letGo{0};

void onLetGo(int)
{
    letGo.store(1);
}

// How long the release may take to sound out before the command gives up waiting.
constexpr double kReleaseLimitSeconds = 30.0;
constexpr auto kPollInterval = std::chrono::milliseconds(10);

std::string preferencesOutputDevice()
{
    const QSettings ini(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
    return ini.value(ini::kOutputAudioDeviceName).toString().toStdString();
}

// Waits up to `seconds` or until `done` says so (checked every few milliseconds).
template <typename Done> void waitFor(double seconds, Done done)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < end && !done())
        std::this_thread::sleep_for(kPollInterval);
}

int playHeldKey(Model& model, const PlayOptions& options, const std::string& output)
{
    std::string message;
    const TGmsl& msl = *model.currentMultiSample();
    if (!msl.keys[size_t(options.key)].hasAudio)
        return fail("Key " + std::to_string(options.key) + " (" + noteName(options.key) +
                        ") has no recorded audio.",
                    false);
    AudioManager audioManager;
    audioManager.setOutputDeviceName(output);
    if (audio::outputDeviceIndex(output, message) < 0)
        return fail("The audio output device '" + output + "' is not available.", false);
    if (!audioManager.apply(msl, message))
        return fail(message, false);

    KeyPlayer keys(model, audioManager);
    if (!keys.play(options.key, message))
        return fail(message, false);
    std::cerr << "Playing key " << options.key << " (" << noteName(options.key) << ") on " << output
              << " for " << options.hold << " s\n";
    const Player& player = audio::player();
    waitFor(options.hold, [&] { return letGo.load() != 0 || !player.isPlaying(); });
    keys.release();
    waitFor(kReleaseLimitSeconds, [&] { return !player.isPlaying(); });
    return kExitOk;
}

int runPlay(const PlayOptions& options)
{
    const std::string output = preferencesOutputDevice();
    if (output.empty() || output == kNoAudioOutEntry)
        return fail("No audio output is chosen in the preferences (" +
                        std::string(ini::kOutputAudioDeviceName) + ").",
                    false);
    int argc = 1;
    char name[] = "tonegrabber-cli";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);

    Model& model = commandModel();
    std::string message;
    if (!initializeWithDevices(model, determineCoreFolders(), message))
        return fail(message, false);
    if (!openProjectFile(model, options.project, message))
        return fail(message, false);
    if (const int status = selectMultiSampleArgument(model, options.multisample); status != kExitOk)
        return status;

    letGo.store(0);
    std::signal(SIGINT, onLetGo);
    std::signal(SIGTERM, onLetGo);
    const int status = playHeldKey(model, options, output);
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    audio::closeStreams(message);
    audio::terminate();
    midi::destroyMidi();
    return status;
}

int runTone(const ToneOptions& options)
{
    const std::string output = preferencesOutputDevice();
    if (output.empty() || output == kNoAudioOutEntry)
        return fail("No audio output is chosen in the preferences (" +
                        std::string(ini::kOutputAudioDeviceName) + ").",
                    false);
    std::string message;
    if (!audio::initialize(message))
        return fail(message, false);
    TuningTone tone;
    tone.waveform = options.wave == "rect" ? TuningWaveform::Rect : TuningWaveform::Sine;
    tone.note = options.note;
    tone.volumeDb = options.volume;

    letGo.store(0);
    std::signal(SIGINT, onLetGo);
    std::signal(SIGTERM, onLetGo);
    int status = kExitOk;
    TuningOscillator oscillator;
    if (!oscillator.start(tone, output, message)) {
        status = fail(message, false);
    } else {
        std::cerr << "Playing " << options.wave << " " << noteName(tone.note) << " ("
                  << tuningFrequency(tone.note) << " Hz, " << tone.volumeDb << " dB) on " << output
                  << " for " << options.seconds << " s\n";
        waitFor(options.seconds, [] { return letGo.load() != 0; });
        oscillator.stop();
        waitFor(1.0, [] { return !audio::player().isPlaying(); }); // the fade-out block
    }
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    audio::closeStreams(message);
    audio::terminate();
    return status;
}

} // namespace

void addPlayCommands(CliApp& app)
{
    auto options = std::make_shared<PlayOptions>();
    CLI::App* play = app.addCommand(
        "play",
        "Plays a Key-Sample on the preferences' audio output: the note, its loop while held, "
        "then the release (Ctrl-C lets go early)",
        [options] { return runPlay(*options); });
    play->add_option("project", options->project, "PATH.TGprj")->required();
    play->add_option("--key", options->key, "MIDI note 0-127")
        ->required()
        ->check(CLI::Range(0, kKeyCount - 1));
    play->add_option("--multisample", options->multisample,
                     "Multi-Sample index (default: the current one)")
        ->check(CLI::Range(0, kMaxMultiSamples - 1));
    play->add_option("--hold", options->hold, "Seconds the key is held (default 1)")
        ->check(CLI::Range(0.0, 3600.0));

    auto tone = std::make_shared<ToneOptions>();
    CLI::App* toneCommand = app.addCommand(
        "tone",
        "Plays the tuning oscillator's reference tone on the preferences' audio output "
        "(Ctrl-C stops early)",
        [tone] { return runTone(*tone); });
    toneCommand->add_option("--note", tone->note, "MIDI note 21-108 (default 69: A4, 440 Hz)")
        ->check(CLI::Range(kTuningLowestNote, kTuningHighestNote));
    toneCommand->add_option("--wave", tone->wave, "sine or rect (default sine)")
        ->check(CLI::IsMember({"sine", "rect"}));
    toneCommand->add_option("--volume", tone->volume, "Peak level in dB, -60 to 0 (default -12)")
        ->check(CLI::Range(kTuningQuietestDb, 0));
    toneCommand->add_option("--seconds", tone->seconds, "Seconds to play (default 3)")
        ->check(CLI::Range(0.0, 3600.0));
}

} // namespace tg::cli
