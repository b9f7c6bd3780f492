// Feeds arbitrary bytes to the project file reader: it must stay inside the buffer and never
// allocate without bound, and a file it accepted must write out to bytes that read back and
// write out again the same.
#include "core/ProjectFile.h"

#include <cstdlib>
#include <memory>

namespace {

tg::ProjectReadContext fuzzContext()
{
    tg::ProjectReadContext context;
    context.projectDir = "/fuzz/project";
    context.userDataFolder = "/fuzz/home";
    context.audioInputDeviceCount = 2;
    // Every key "has" a recording, so the old silence times are always converted.
    context.wavRate = [](const std::string&, double& rate) {
        rate = 48000.0;
        return true;
    };
    return context;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const tg::ProjectReadContext context = fuzzContext();
    static auto project = std::make_unique<tg::Project>();
    static auto again = std::make_unique<tg::Project>();
    tg::MemorySource source(data, size);
    if (!tg::parseProject(source, context, *project))
        return 0;
    if (project->mslCount < 0 || project->mslCount > tg::kMaxMultiSamples ||
        project->currentMsl < 0 || project->currentMsl >= tg::kMaxMultiSamples)
        std::abort();
    const std::vector<uint8_t> first = tg::serializeProject(*project, project->dataPath);
    tg::MemorySource firstSource(first.data(), first.size());
    if (!tg::parseProject(firstSource, context, *again))
        std::abort();
    if (tg::serializeProject(*again, again->dataPath) != first)
        std::abort();
    return 0;
}
