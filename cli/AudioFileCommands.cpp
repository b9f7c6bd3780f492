// The audio file commands: wav-info and aiff-info (header readers) and convert (the converter).
#include "cli/CliApp.h"
#include "cli/Commands.h"

#include "audiofile/AiffFile.h"
#include "audiofile/SampleConverter.h"
#include "audiofile/WavFile.h"

#include <cstdio>
#include <iostream>
#include <map>
#include <memory>

namespace tg::cli {

namespace {

struct AudioInfo {
    WaveFormat format;
    int32_t frames = 0;
    int32_t loopStart = -1, loopEnd = -1, rootKey = -1;
};

int printInfo(const AudioInfo& info, bool json)
{
    const WaveFormat& f = info.format;
    if (json) {
        printJson({{"wFormatTag", f.wFormatTag},
                   {"nChannels", f.nChannels},
                   {"nSamplesPerSec", f.nSamplesPerSec},
                   {"nAvgBytesPerSec", f.nAvgBytesPerSec},
                   {"nBlockAlign", f.nBlockAlign},
                   {"wBitsPerSample", f.wBitsPerSample},
                   {"cbSize", f.cbSize},
                   {"frames", info.frames},
                   {"loopStart", info.loopStart},
                   {"loopEnd", info.loopEnd},
                   {"rootKey", info.rootKey}});
        return kExitOk;
    }
    std::cout << "format:      " << (f.nChannels == 2 ? "stereo" : "mono") << ", "
              << f.nSamplesPerSec << " Hz, " << f.wBitsPerSample << " bit (tag " << f.wFormatTag
              << ", block align " << f.nBlockAlign << ", " << f.nAvgBytesPerSec << " bytes/s)\n"
              << "frames:      " << info.frames << '\n';
    if (f.nSamplesPerSec)
        std::printf("duration:    %.3f s\n", static_cast<double>(info.frames) / f.nSamplesPerSec);
    std::cout << "loop:        ";
    if (info.loopStart >= 0 && info.loopEnd >= 0)
        std::cout << info.loopStart << " .. " << info.loopEnd << '\n';
    else
        std::cout << "none\n";
    std::cout << "root key:    ";
    if (info.rootKey >= 0)
        std::cout << info.rootKey << '\n';
    else
        std::cout << "none\n";
    std::cout.flush();
    return kExitOk;
}

// "44.1KHz, Stereo, 16bit" and the other names of the recording format table.
bool formatFromText(const std::string& name, WaveFormat& format)
{
    double kiloHertz = 0;
    char channels[16] = {0};
    int bits = 0;
    char tail = 0;
    if (std::sscanf(name.c_str(), "%lfKHz, %15[A-Za-z], %dbit%c", &kiloHertz, channels, &bits,
                    &tail) != 3)
        return false;
    const std::string ch = channels;
    if ((ch != "Mono" && ch != "Stereo") || (bits != 8 && bits != 16 && bits != 24) ||
        kiloHertz <= 0 || kiloHertz > 384)
        return false;
    format = makeWaveFormat(static_cast<uint32_t>(kiloHertz * 1000 + 0.5), ch == "Stereo" ? 2 : 1,
                            static_cast<uint16_t>(bits));
    return true;
}

bool startsWithForm(const std::string& path)
{
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    char magic[4] = {0};
    return file && std::fread(magic, 1, 4, file.get()) == 4 && std::string(magic, 4) == "FORM";
}

int convertFile(const std::string& in, const std::string& out, const std::string& formatName,
                const std::string& channelName, const std::string& resampleName)
{
    WaveFormat destination;
    if (!formatFromText(formatName, destination)) {
        std::cerr << "--format: unknown format \"" << formatName
                  << "\" (expected a name such as \"44.1KHz, Stereo, 16bit\")\n";
        return kExitBadUsage;
    }
    const std::map<std::string, ChannelMode> channelModes = {
        {"mix", ChannelMode::Mix}, {"left", ChannelMode::Left}, {"right", ChannelMode::Right}};
    const std::map<std::string, ResampleMode> resampleModes = {{"linear", ResampleMode::Linear},
                                                               {"average", ResampleMode::Average},
                                                               {"hq", ResampleMode::HighQuality}};

    std::string message;
    WaveFormat source;
    std::vector<uint8_t> data;
    int32_t loopStart = -1, loopEnd = -1, rootKey = -1;
    if (startsWithForm(in)) {
        AiffContents contents;
        if (!readAiff(in, contents, message))
            return fail(message, false);
        source = contents.format;
        data = std::move(contents.data);
        loopStart = contents.loopStart;
        loopEnd = contents.loopEnd;
        rootKey = contents.rootKey;
    } else {
        int32_t frames = 0;
        if (!readWavHeader(in, source, loopStart, loopEnd, rootKey, frames, message) ||
            !readWav(in, source, data, message))
            return fail(message, false);
        data.resize(static_cast<size_t>(frames) * source.nBlockAlign);
    }
    const bool looped = loopStart >= 0 && loopEnd >= 0;
    if (!convertSamples(data, source, destination, looped ? &loopStart : nullptr,
                        looped ? &loopEnd : nullptr, channelModes.at(channelName),
                        resampleModes.at(resampleName), &message))
        return fail(message, false);
    WavLoopInfo loop{loopStart, loopEnd, rootKey >= 0 ? rootKey : 60};
    if (!writeWav(out, destination, data, message, looped ? &loop : nullptr))
        return fail(message, false);
    std::cout << out << ": " << data.size() / destination.nBlockAlign << " frames, " << formatName;
    if (looped)
        std::cout << ", loop " << loopStart << " .. " << loopEnd;
    std::cout << '\n';
    return kExitOk;
}

} // namespace

void addAudioFileCommands(CliApp& app)
{
    auto wavFile = std::make_shared<std::string>();
    auto wavJson = std::make_shared<bool>(false);
    CLI::App* wav =
        app.addCommand("wav-info", "Prints format, frame count, loop and root key of a WAV file",
                       [wavFile, wavJson] {
                           AudioInfo info;
                           std::string message;
                           if (!readWavHeader(*wavFile, info.format, info.loopStart, info.loopEnd,
                                              info.rootKey, info.frames, message))
                               return fail(message, *wavJson);
                           return printInfo(info, *wavJson);
                       });
    wav->add_option("FILE", *wavFile, "WAV file")->required();
    wav->add_flag("--json", *wavJson, "Print one JSON document");

    auto aiffFile = std::make_shared<std::string>();
    auto aiffJson = std::make_shared<bool>(false);
    CLI::App* aiff = app.addCommand(
        "aiff-info", "Prints format, frame count, loop and root key of an AIFF or AIFF-C file",
        [aiffFile, aiffJson] {
            AiffContents contents;
            std::string message;
            if (!readAiff(*aiffFile, contents, message))
                return fail(message, *aiffJson);
            if (!message.empty())
                std::cerr << message; // notes on chunks that were skipped
            AudioInfo info;
            info.format = contents.format;
            info.frames = static_cast<int32_t>(contents.data.size() / contents.format.nBlockAlign);
            info.loopStart = contents.loopStart;
            info.loopEnd = contents.loopEnd;
            info.rootKey = contents.rootKey;
            return printInfo(info, *aiffJson);
        });
    aiff->add_option("FILE", *aiffFile, "AIFF or AIFF-C file")->required();
    aiff->add_flag("--json", *aiffJson, "Print one JSON document");

    struct ConvertArgs {
        std::string in, out, format, channelMode = "mix", resample = "average";
    };
    auto args = std::make_shared<ConvertArgs>();
    CLI::App* convert = app.addCommand(
        "convert", "Converts a WAV or AIFF file to a WAV file in another format, loop included",
        [args] {
            return convertFile(args->in, args->out, args->format, args->channelMode,
                               args->resample);
        });
    convert->add_option("IN", args->in, "WAV or AIFF file to read")->required();
    convert->add_option("OUT", args->out, "WAV file to write")->required();
    convert->add_option("--format", args->format, "Target format, e.g. \"48KHz, Stereo, 24bit\"")
        ->required();
    convert->add_option("--channel-mode", args->channelMode, "Stereo to mono: mix, left or right")
        ->check(CLI::IsMember({"mix", "left", "right"}));
    convert->add_option("--resample", args->resample, "Rate change: linear, average or hq")
        ->check(CLI::IsMember({"linear", "average", "hq"}));
}

} // namespace tg::cli
