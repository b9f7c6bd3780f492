// `new` (a Project made as the project wizard makes it, then saved) and `info` (the whole
// Project record of a project file).
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"
#include "cli/RecordingMode.h"

#include "core/Model.h"
#include "core/NoteNames.h"
#include "core/Preferences.h"
#include "core/ProjectFile.h"
#include "recording/ProjectSetup.h"

#include <filesystem>
#include <iostream>
#include <memory>

namespace tg::cli {

namespace {

using nlohmann::json;

json keyJson(const TGmsl_key& k, int note)
{
    json reserved = json::array({k.reserved1});
    for (int32_t v : k.reservedA)
        reserved.push_back(v);
    for (int32_t v : k.reservedB)
        reserved.push_back(v);
    return {{"index", note},
            {"noteName", noteName(note)},
            {"keyState", k.keyState},
            {"hasAudio", k.hasAudio},
            {"locked", k.locked},
            {"autoGainXFade", k.autoGainXFade},
            {"mapLowFlag", k.mapLowFlag},
            {"mapLow", k.mapLow},
            {"mapHighFlag", k.mapHighFlag},
            {"mapHigh", k.mapHigh},
            {"name", k.name},
            {"Silence_In", k.Silence_In},
            {"Silence_Out", k.Silence_Out},
            {"Note_In", k.Note_In},
            {"Note_Out", k.Note_Out},
            {"Release_In", k.Release_In},
            {"Release_Out", k.Release_Out},
            {"releaseOn", k.releaseOn},
            {"loopMode", k.loopMode},
            {"clickpopred", k.clickpopred},
            {"zerocrossing", k.zerocrossing},
            {"Loop_In", k.Loop_In},
            {"Loop_Out", k.Loop_Out},
            {"LoopSearch_In", k.LoopSearch_In},
            {"LoopSearch_Out", k.LoopSearch_Out},
            {"LoopSearch_Len", k.LoopSearch_Len},
            {"loopResults", k.loopResults},
            {"xfadeLen", k.xfadeLen},
            {"bfxfadeLen", k.bfxfadeLen},
            {"xfadeCurve", k.xfadeCurve},
            {"bfxfadeCurve", k.bfxfadeCurve},
            {"reserved", reserved}};
}

json multiSampleJson(const TGmsl& m)
{
    const RecordSettings& rs = m.recordsettings;
    json controllers = json::array();
    for (const auto& row : m.controllerTable)
        controllers.push_back(row);
    json parameters = json::array();
    for (const auto& row : m.parameterTable)
        parameters.push_back(row);
    json keys = json::array();
    for (int note = 0; note < kKeyCount; ++note)
        keys.push_back(keyJson(m.keys[note], note));
    return {{"name", m.name},
            {"MIDIoutDevice", m.MIDIoutDevice},
            {"MIDIoutChannel", m.MIDIoutChannel},
            {"AutoSendReset", m.AutoSendReset},
            {"controllerTable", controllers},
            {"parameterTable", parameters},
            {"MIDIoutProgram_active", m.MIDIoutProgram_active},
            {"MIDIoutProgram", m.MIDIoutProgram},
            {"MIDIoutAttackVelocity", m.MIDIoutAttackVelocity},
            {"MIDIoutReleaseVelocity", m.MIDIoutReleaseVelocity},
            {"MIDIoutAfterTouch", m.MIDIoutAfterTouch},
            {"AudioInDevice", m.AudioInDevice},
            {"AudioInFormat", m.AudioInFormat},
            {"notelength1", rs.notelength1},
            {"notelength2_active", rs.notelength2_active},
            {"notelength2", rs.notelength2},
            {"releaselength1", rs.releaselength1},
            {"releaselength2_active", rs.releaselength2_active},
            {"releaselength2", rs.releaselength2},
            {"clickpopred", rs.clickpopred},
            {"zerocrossing", rs.zerocrossing},
            {"latency", rs.latency},
            {"thresPrecisionIn", rs.thresPrecisionIn},
            {"thresPrecisionOut", rs.thresPrecisionOut},
            {"recpause", rs.recpause},
            {"autoloop", rs.autoloop},
            {"autogain", rs.autogain},
            {"loopsearchlength", rs.loopsearchlength},
            {"loopstart", rs.loopstart},
            {"loopoutsearchstart", rs.loopoutsearchstart},
            {"xfadelength", rs.xfadelength},
            {"xfadetype", rs.xfadetype},
            {"bfxfadelength", rs.bfxfadelength},
            {"bfxfadetype", rs.bfxfadetype},
            {"range_start", m.range_start},
            {"range_end", m.range_end},
            {"mapTo", m.mapTo},
            {"keys", keys},
            {"KBrangeIn", m.KBrangeIn},
            {"KBrangeOut", m.KBrangeOut},
            {"audioInChannelL", m.audioInChannelL},
            {"audioInChannelR", m.audioInChannelR}};
}

json projectJson(const Project& p)
{
    json multisamples = json::array();
    for (int i = 0; i < p.mslCount; ++i)
        multisamples.push_back(multiSampleJson(p.msl[i]));
    return {{"name", p.name},           {"projectDir", p.projectDir},  {"dataPath", p.dataPath},
            {"mslCount", p.mslCount},   {"currentMsl", p.currentMsl},  {"topMsl", p.topMsl},
            {"viewValue", p.viewValue}, {"multisamples", multisamples}};
}

void printProject(const Project& p)
{
    std::cout << "Project:      " << p.name << "\nFolder:       " << p.projectDir
              << "\nData path:    " << p.dataPath << "\nMulti-Samples: " << p.mslCount
              << " (current " << p.currentMsl << ")\n";
    for (int i = 0; i < p.mslCount; ++i) {
        const TGmsl& m = p.msl[i];
        int selected = 0, withAudio = 0;
        for (const TGmsl_key& k : m.keys) {
            selected += k.keyState ? 1 : 0;
            withAudio += k.hasAudio ? 1 : 0;
        }
        std::cout << "  [" << i << "] " << m.name << ": velocity " << m.range_start << "-"
                  << m.range_end << ", keys " << noteName(m.KBrangeIn) << "-"
                  << noteName(m.KBrangeOut) << ", " << selected << " selected, " << withAudio
                  << " with audio; MIDI out '" << m.MIDIoutDevice << "' channel "
                  << m.MIDIoutChannel + 1 << ", audio in '" << m.AudioInDevice << "' ("
                  << m.AudioInFormat << "), note " << m.recordsettings.notelength1 << " s, release "
                  << m.recordsettings.releaselength1 << " s\n";
    }
}

int runInfo(const std::string& path, bool asJson)
{
    Model& model = commandModel();
    std::string message;
    if (!openProjectFile(model, path, message))
        return fail(message, asJson);
    const Project& project = *model.currentProject();
    if (asJson)
        printJson(projectJson(project));
    else
        printProject(project);
    return kExitOk;
}

struct NewOptions {
    std::string path;
    std::string autoloop = "off";
    bool semi = false;
    ProjectSetupRecord setup;
    CLI::App* command = nullptr;
};

// The preferences supply the devices, format and lengths the options leave out, as they do
// for a new Multi-Sample.
void takeDefaultsFromPreferences(NewOptions& options, const Preferences& prefs)
{
    ProjectSetupRecord& setup = options.setup;
    const auto given = [&](const char* option) { return options.command->count(option) > 0; };
    if (!given("--audio-in"))
        setup.audioInDevice = prefs.AudioInDevice;
    if (!given("--midi-out"))
        setup.midiOutDevice = prefs.MIDIoutDevice;
    if (!given("--format"))
        setup.sampleFormat = prefs.AudioInFormat;
    if (!given("--note-length"))
        setup.noteLength = prefs.recordsettings.notelength1;
    if (!given("--release-length"))
        setup.releaseLength = static_cast<float>(prefs.recordsettings.releaselength1);
}

int runNew(NewOptions options)
{
    ProjectSetupRecord& setup = options.setup;
    if (options.path.empty()) {
        std::cerr << "Bad argument '': the project file's path is empty.\n";
        return kExitBadUsage;
    }
    const std::filesystem::path file = std::filesystem::absolute(options.path);
    const std::string extension = std::string(".") + kProjectExtension;
    if (file.extension() != extension) {
        std::cerr << "Bad argument '" << options.path << "': the project file must end in "
                  << extension << ".\n";
        return kExitBadUsage;
    }
    setup.name = file.stem().string();
    setup.automatic = !options.semi;
    Model& model = commandModel();
    takeDefaultsFromPreferences(options, model.preferences());
    setup.autoLoop = options.autoloop != "off";
    if (options.autoloop == "simple")
        setup.complexity = LoopComplexity::Simple;
    else if (options.autoloop == "complex")
        setup.complexity = LoopComplexity::Complex;
    else
        setup.complexity = LoopComplexity::Intermediate;

    Result check = checkSetupName(model, setup.name);
    if (check.ok())
        check = checkSetupDataPath(setup.dataPath);
    if (!check.ok())
        return fail(check.message, false);
    setup.dataPath = std::filesystem::absolute(setup.dataPath).lexically_normal().string();
    std::error_code error;
    if (std::filesystem::exists(file, error))
        return fail("The project file '" + file.string() + "' already exists.", false);

    const Result made = createProjectFromSetup(model, setup);
    if (!made.ok())
        return fail(made.message, false);
    std::string message;
    if (!saveProject(*model.currentProject(), file.parent_path().string(), setup.name, message))
        return fail(message, false);
    // The wizard records its new Project at once in the chosen mode; here the next `record`
    // does, so the choice is kept until then.
    if (!rememberSemiAutomatic(file.string(), options.semi, message))
        return fail(message, false);
    std::cout << "Created " << file.string() << " with " << model.currentProject()->mslCount
              << " Multi-Sample(s).\n";
    return kExitOk;
}

} // namespace

void addProjectCommands(CliApp& app)
{
    auto infoPath = std::make_shared<std::string>();
    auto infoJson = std::make_shared<bool>(false);
    CLI::App* info = app.addCommand(
        "info", "Prints the whole Project record of a project file, with hasAudio per key",
        [infoPath, infoJson] { return runInfo(*infoPath, *infoJson); });
    info->add_option("project", *infoPath, "PATH.TGprj")->required();
    info->add_flag("--json", *infoJson, "One JSON document on stdout");

    auto options = std::make_shared<NewOptions>();
    CLI::App* made =
        app.addCommand("new", "Creates a Project exactly as the Project Wizard would, and saves it",
                       [options] { return runNew(*options); });
    options->command = made;
    ProjectSetupRecord& s = options->setup;
    made->add_option("project", options->path, "PATH.TGprj (its base name names the Project)")
        ->required();
    made->add_option("--data-path", s.dataPath, "Existing folder for the Key-Sample WAV files")
        ->required();
    made->add_option("--audio-in", s.audioInDevice, "Audio input device name");
    made->add_option("--format", s.sampleFormat,
                     "Recording format, e.g. \"44.1KHz, Stereo, 16bit\"")
        ->check([](const std::string& v) {
            return v.size() <= 36 ? std::string() : std::string("at most 36 characters");
        });
    made->add_option("--midi-out", s.midiOutDevice, "MIDI output device name");
    made->add_option("--channel", s.midiChannel, "MIDI channel 1-16")->check(CLI::Range(1, 16));
    made->add_option("--program", s.midiProgram, "MIDI program 0-127; 0 sends no program change")
        ->check(CLI::Range(0, 127));
    made->add_option("--keys", s.keyCount, "Sampling range: 37, 49, 61, 76, 88 or 128 keys")
        ->check(CLI::IsMember({37, 49, 61, 76, 88, 128}));
    made->add_option("--layers", s.velocityLayers, "Velocity layers 1-127")
        ->check(CLI::Range(1, 127));
    made->add_option("--step", s.keyStep, "Key step: distance between recorded keys")
        ->check(CLI::Range(1, 127));
    made->add_option("--note-length", s.noteLength, "Note length in seconds")
        ->check(CLI::Range(0.0, 3600.0));
    made->add_option("--release-length", s.releaseLength, "Release length in seconds")
        ->check(CLI::Range(0.0, 1800.0));
    made->add_option("--autoloop", options->autoloop, "off, simple, intermediate or complex")
        ->check(CLI::IsMember({"off", "simple", "intermediate", "complex"}));
    made->add_option("--loop-start", s.loopStartPercent,
                     "Loop start in % of the sample: 30, 50, 70")
        ->check(CLI::IsMember({30, 50, 70}));
    made->add_flag("--semi", options->semi,
                   "Semi-automatic recording: `record` then asks about every take");
    made->add_flag("--plugin", s.pluginRecording, "Record the hosted instrument");
}

} // namespace tg::cli
