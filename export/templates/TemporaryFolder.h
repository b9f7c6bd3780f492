// A temporary folder owned by an exporter and removed with everything in it when the owner goes.
// It is a scratch folder: the files written into it are not synced to disk.
#pragma once

#include <string>

namespace tg {

class TemporaryFolder {
  public:
    TemporaryFolder() = default;
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Creates a fresh folder under the system's temporary directory (a second call removes the
    // first folder). Returns 1, or 0 with `message`.
    int create(std::string& message);
    // Empty until create() succeeded.
    const std::string& path() const { return path_; }

  private:
    void remove();
    std::string path_;
};

// Creates `folder` and its missing parents. Returns 1, or 0 with
// "unable to create directory \"%s\"" in `message`.
int createFolders(const std::string& folder, std::string& message);

} // namespace tg
