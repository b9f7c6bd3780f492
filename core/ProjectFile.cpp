// Saving Projects to, and loading them from, project files on disk.
#include "core/ProjectFile.h"

#include "core/AtomicFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/Paths.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tg {

namespace {

const char* const kUnableToOpen = "unable to open: %s";
const char* const kWriteError = "write error: %s";
const char* const kReadError = "read error: %s\n\nmaybe wrong format?";
const char* const kTooManyProjects = "You cannot have more than %ld projects.";
const char* const kBadExtension = "something was wrong with the extension...";
const char* const kNameTooLong =
    "The name of the project is too long and will be truncated\n\n\"%s\"\nwill become\n\"%s\"";
const char* const kNameInUse =
    "The name \"%s\" is already in use.\n\nLoading will be canceled at this point.";
const char* const kDataPathMissing = "Couldn't find the datapath \"%s\"\nof the project \"%s\"";

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

class FileSource : public ByteSource {
  public:
    explicit FileSource(FILE* file) : file_(file)
    {
        struct stat info {};
        if (fstat(fileno(file), &info) == 0 && info.st_size > 0)
            left_ = static_cast<uint64_t>(info.st_size);
    }
    bool read(void* destination, size_t count) override
    {
        if (count > left_ || std::fread(destination, 1, count, file_) != count)
            return false;
        left_ -= count;
        return true;
    }
    bool skip(size_t count) override
    {
        if (count > left_ || std::fseek(file_, static_cast<long>(count), SEEK_CUR) != 0)
            return false;
        left_ -= count;
        return true;
    }
    uint64_t remaining() const override { return left_; }

  private:
    FILE* file_;
    uint64_t left_ = 0;
};

// Writes `bytes` over `target` whole or not at all.
int replaceFile(const std::string& target, const std::vector<uint8_t>& bytes, std::string& message)
{
    AtomicFile file(target);
    if (!file.open())
        return setMessage(message, kUnableToOpen, target.c_str());
    if (!file.write(bytes.data(), bytes.size()) || !file.commit())
        return setMessage(message, kWriteError, target.c_str());
    return 1;
}

} // namespace

int saveProject(Project& project, const std::string& folder, const std::string& name,
                std::string& message, bool relocateData, const OverwriteQuestion& askOverwrite)
{
    const std::string fileName = name + "." + kProjectExtension;
    const std::string path = joinPath(folder, fileName);
    copyText(project.name, name.c_str());
    std::error_code error;
    if (askOverwrite && std::filesystem::exists(path, error) && !askOverwrite(path)) {
        message.clear();
        return 0;
    }
    const std::string storedDataPath =
        relocateData ? formatText("..\\%s_data", project.name) : std::string(project.dataPath);
    if (!replaceFile(path, serializeProject(project, storedDataPath), message))
        return 0;
    copyText(project.projectDir, folder.c_str());
    copyText(project.fileName, fileName.c_str());
    project.modified = 0;
    return 1;
}

int saveProjectAgain(Project& project, std::string& message)
{
    if (project.projectDir[0] == '\0')
        return 1;
    if (project.fileName[0] == '\0')
        return saveProject(project, project.projectDir, project.name, message);
    // Back to the file the Project came from: its name may be longer than the record holds.
    const std::string path = joinPath(project.projectDir, project.fileName);
    if (!replaceFile(path, serializeProject(project, project.dataPath), message))
        return 0;
    project.modified = 0;
    return 1;
}

void markKeysWithAudio(Project& project)
{
    std::error_code error;
    for (int i = 0; i < project.mslCount; ++i) {
        TGmsl& msl = project.msl[i];
        for (int note = 0; note < kKeyCount; ++note)
            msl.keys[note].hasAudio =
                std::filesystem::is_regular_file(keySampleFileName(project, msl, note), error) ? 1
                                                                                               : 0;
    }
}

int loadProjects(Model& model, const std::string& folder, const std::vector<std::string>& fileNames,
                 const ProjectLoadOptions& options, ProjectLoadOutcome& outcome,
                 std::string& message)
{
    if (model.projectCount() >= kMaxProjects)
        return setMessage(message, kTooManyProjects, static_cast<long>(kMaxProjects));
    const size_t room = static_cast<size_t>(kMaxProjects - model.projectCount());
    const size_t taken = std::min(room, fileNames.size());
    for (size_t i = 0; i < taken; ++i) {
        const std::string& fileName = fileNames[i];
        const size_t dot = fileName.rfind('.');
        if (dot == std::string::npos)
            return setMessage(message, "%s", kBadExtension);
        const std::string baseName = fileName.substr(0, dot);
        const std::string extension = fileName.substr(dot + 1);
        char name[kNameSize] = {};
        copyText(name, baseName.c_str());
        if (baseName.size() > kNameSize - 1)
            outcome.warnings.push_back(formatText(kNameTooLong, baseName.c_str(), name));
        if (!options.skipNameCheck)
            for (int p = 0; p < model.projectCount(); ++p)
                if (std::strcmp(name, model.project(p).name) == 0)
                    return setMessage(message, kNameInUse, name);

        const Result made = model.newProject();
        if (!made.ok())
            return setMessage(message, "%s", made.message.c_str());
        const int index = model.currentProjectIndex();
        Project& project = model.project(index);
        copyText(project.name, name);
        copyText(project.projectDir, folder.c_str());
        copyText(project.fileName, fileName.c_str());

        const std::string path = joinPath(folder, baseName + "." + extension);
        File file(std::fopen(path.c_str(), "rb"), &std::fclose);
        if (!file) {
            model.deleteProject();
            return setMessage(message, kUnableToOpen, path.c_str());
        }
        FileSource source(file.get());
        const ProjectReadContext context{folder, userDataFolder(), model.audioInputDeviceCount(),
                                         options.wavRate};
        if (!parseProject(source, context, project)) {
            model.deleteProject();
            return setMessage(message, kReadError, path.c_str());
        }
        file.reset();
        project.modified = 0;
        markKeysWithAudio(project);
        outcome.loaded.push_back(index);
        // The list saw the new slot before it had its name and contents.
        model.notifyListeners([&](TonegrabberModelListener& l) {
            l.projectChanged(index);
            l.currentProjectChanged(index);
        });
        std::error_code error;
        if (!options.skipDataPathCheck && !std::filesystem::is_directory(project.dataPath, error))
            outcome.warnings.push_back(
                formatText(kDataPathMissing, project.dataPath, project.name));
    }
    return 1;
}

} // namespace tg
