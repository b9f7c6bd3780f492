// The project file (.TGprj): its byte layout, the writer, the reader with its version rules,
// and saving and loading Projects of the model on disk.
#pragma once

#include "core/Message.h"
#include "core/Records.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tg {

class Model;

constexpr int32_t kProjectFileVersion = 2980; // the version written; newer ones are refused
constexpr const char* kProjectSignature = "Tonegrabber Project"; // stored with its NUL: 20 bytes
constexpr size_t kProjectSignatureSize = 20;
constexpr size_t kKeyBlockSize = 194; // one key record in a version-2980 file
constexpr const char* kProjectExtension = "TGprj";
// Stored sizes the reader cuts strings to (terminating NUL included).
constexpr int kStoredAudioInDeviceSize = 64;

// Reports the sample rate (frames per second) of the WAV file at `path`; false when it cannot
// be read. Files older than version 2250 keep their silence markers in seconds and need it.
using WavRateReader = std::function<bool(const std::string& path, double& rate)>;

// Where the bytes of a project file come from: a file on disk or a buffer in memory. Reads
// never go past the end; remaining() bounds every stored length before it is used.
class ByteSource {
  public:
    virtual ~ByteSource() = default;
    virtual bool read(void* destination, size_t count) = 0;
    virtual bool skip(size_t count) = 0;
    virtual uint64_t remaining() const = 0;
};

class MemorySource : public ByteSource {
  public:
    MemorySource(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool read(void* destination, size_t count) override;
    bool skip(size_t count) override;
    uint64_t remaining() const override { return size_ - offset_; }

  private:
    const uint8_t* data_;
    size_t size_;
    size_t offset_ = 0;
};

// What the reader needs besides the bytes.
struct ProjectReadContext {
    std::string projectDir;        // folder of the file: base of a ".." data path
    std::string userDataFolder;    // base of a "." data path
    int audioInputDeviceCount = 0; // entries of the rebuilt channel lists
    WavRateReader wavRate;         // for the silence markers of files older than 2250; may be empty
};

// The bytes of the project file of `project`, with `storedDataPath` as its data path text.
std::vector<uint8_t> serializeProject(const Project& project, const std::string& storedDataPath);

// Reads a project file over `project`: data path, list fields and Multi-Samples. The Project's
// name and folder are not touched (the file's base name names it). Returns 1, or 0 when the
// bytes are not a whole project file of a known version (the caller reports the read error).
int parseProject(ByteSource& source, const ProjectReadContext& context, Project& project);

// The data path as stored: a text beginning ".." is relative to the project's folder, one
// beginning "." to the user data folder; either separator is accepted. Cut to 259 characters.
std::string expandDataPath(const std::string& stored, const std::string& projectDir,
                           const std::string& userDataFolder);

// --- on disk ---

// Asked before an existing file is replaced; false keeps it and nothing is written.
using OverwriteQuestion = std::function<bool(const std::string& path)>;

// Writes "<folder>/<name>.TGprj". The file is written beside the target under a temporary
// name, flushed to disk and renamed over the target, so the previous file stays whole
// whatever happens during the write. With `relocateData` the stored data path is the data
// folder beside the project file ("..\<name>_data"). Returns 1, or 0 with `message`.
int saveProject(Project& project, const std::string& folder, const std::string& name,
                std::string& message, bool relocateData = false,
                const OverwriteQuestion& askOverwrite = {});

// Saves a Project to its own folder under its own name; a Project never saved (no folder) is
// left alone and counts as success.
int saveProjectAgain(Project& project, std::string& message);

struct ProjectLoadOptions {
    bool skipDataPathCheck = false; // no warning for a missing data path
    bool skipNameCheck = false;     // allow a name another open Project has
    WavRateReader wavRate;
};

// What a load did besides its stopping message: the indexes of the Projects it loaded and
// the warnings for the user (cut names, missing data paths), in order.
struct ProjectLoadOutcome {
    std::vector<int> loaded;
    std::vector<std::string> warnings;
};

// Loads the files `fileNames` of `folder`, each into a new Project of the model, stopping at
// the first failure. Returns 1, or 0 with `message`; Projects loaded before the failure stay.
int loadProjects(Model& model, const std::string& folder, const std::vector<std::string>& fileNames,
                 const ProjectLoadOptions& options, ProjectLoadOutcome& outcome,
                 std::string& message);

// Sets hasAudio of every key of the Project's Multi-Samples from the presence of its WAV file.
void markKeysWithAudio(Project& project);

} // namespace tg
