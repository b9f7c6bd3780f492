// Name rules of Projects and Multi-Samples and the file names built from them.
#include "core/Names.h"

#include "core/Model.h"
#include "core/NoteNames.h"
#include "core/Paths.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace tg {

bool isAllowedNameChar(char c)
{
    return c != '\0' && std::strchr(kForbiddenNameChars, c) == nullptr;
}

std::string withoutForbiddenNameChars(const std::string& name)
{
    std::string result;
    std::copy_if(name.begin(), name.end(), std::back_inserter(result), isAllowedNameChar);
    return result;
}

Result checkProjectName(const Model& model, const std::string& name, int exceptIndex)
{
    if (name.empty())
        return Result::refused("Empty project names are not allowed!");
    for (int i = 0; i < model.projectCount(); ++i)
        if (i != exceptIndex && name == model.project(i).name)
            return Result::refused("A project with that name already exists!");
    return Result::done();
}

Result checkMultiSampleName(const Project& project, const std::string& name, int exceptIndex)
{
    if (name.empty())
        return Result::refused("Empty multisample names are not allowed!");
    for (int i = 0; i < project.mslCount; ++i)
        if (i != exceptIndex && name == project.msl[i].name)
            return Result::refused("A multisample with that name already exists!");
    return Result::done();
}

namespace {

constexpr int kCopyCandidates = 20;

// Digits only, and few enough that counting on from them cannot overflow.
bool readsAsDecimalNumber(const std::string& text, long long& number)
{
    if (text.empty() || text.size() > 15)
        return false;
    number = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
        number = number * 10 + (c - '0');
    }
    return true;
}

} // namespace

bool nextCopyName(const std::string& name, const std::vector<std::string>& siblings,
                  std::string& copyName)
{
    std::string base = name;
    long long start = 0;
    const size_t dash = name.rfind('-');
    long long number = 0;
    if (dash != std::string::npos && readsAsDecimalNumber(name.substr(dash + 1), number)) {
        base = name.substr(0, dash);
        start = number;
    }
    for (int step = 1; step <= kCopyCandidates; ++step) {
        std::string candidate = base + "-" + std::to_string(start + step);
        if (std::find(siblings.begin(), siblings.end(), candidate) == siblings.end()) {
            copyName = candidate;
            return true;
        }
    }
    return false;
}

Result projectCopyName(const Model& model, std::string& copyName)
{
    std::vector<std::string> siblings;
    for (int i = 0; i < model.projectCount(); ++i)
        siblings.emplace_back(model.project(i).name);
    if (!nextCopyName(model.view().name, siblings, copyName))
        return Result::refused("Cannot duplicate this project. There are too many projects with "
                               "the same base name!");
    return Result::done();
}

Result multiSampleCopyName(const Project& project, std::string& copyName)
{
    std::vector<std::string> siblings;
    for (int i = 0; i < project.mslCount; ++i)
        siblings.emplace_back(project.msl[i].name);
    const int current = std::clamp<int32_t>(project.currentMsl, 0, kMaxMultiSamples - 1);
    if (!nextCopyName(project.msl[current].name, siblings, copyName))
        return Result::refused("Cannot duplicate this multisample. There are too many "
                               "multisamples with the same base name!");
    return Result::done();
}

static bool anyKeySampleExists(const std::string& dataPath, const std::string& projectName,
                               const std::string& multiSampleName)
{
    std::error_code error;
    for (int note = 0; note < kKeyCount; ++note)
        if (std::filesystem::exists(keySampleFileName(dataPath, projectName, multiSampleName, note),
                                    error))
            return true;
    return false;
}

bool projectKeySamplesExist(const Project& project, const std::string& projectName)
{
    for (int i = 0; i < project.mslCount; ++i)
        if (anyKeySampleExists(project.dataPath, projectName, project.msl[i].name))
            return true;
    return false;
}

bool multiSampleKeySamplesExist(const Project& project, const std::string& multiSampleName)
{
    return anyKeySampleExists(project.dataPath, project.name, multiSampleName);
}

std::string keySampleFileName(const std::string& dataPath, const std::string& projectName,
                              const std::string& multiSampleName, int note)
{
    return joinPath(dataPath, formatText("%s - %s - %03d - %s.wav", projectName.c_str(),
                                         multiSampleName.c_str(), note, noteName(note).c_str()));
}

std::string keySampleFileName(const Project& project, const TGmsl& msl, int note)
{
    return keySampleFileName(project.dataPath, project.name, msl.name, note);
}

std::string projectDataFolder(const std::string& projectDir, const std::string& projectName)
{
    return joinPath(projectDir, projectName + "_data");
}

} // namespace tg
