// Temporary folders of the zipping exporters, and folder creation for the card layouts.
#include "export/templates/TemporaryFolder.h"

#include "core/Message.h"
#include "core/ScratchFolders.h"

#include <cstdlib>
#include <filesystem>

namespace tg {

TemporaryFolder::~TemporaryFolder()
{
    remove();
}

void TemporaryFolder::remove()
{
    if (path_.empty())
        return;
    removeScratchFolder(path_);
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
    path_.clear();
}

int TemporaryFolder::create(std::string& message)
{
    remove();
    std::error_code error;
    const std::filesystem::path base = std::filesystem::temp_directory_path(error);
    if (error)
        return setMessage(message, "no folder for temporary files");
    std::string pattern = (base / "tonegrabber-export-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        return setMessage(message, "unable to create directory \"%s\"", pattern.c_str());
    path_ = pattern;
    // Its files are zipped or copied elsewhere and then deleted: they need no syncing.
    addScratchFolder(path_);
    return 1;
}

int createFolders(const std::string& folder, std::string& message)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error || !std::filesystem::is_directory(folder, error))
        return setMessage(message, "unable to create directory \"%s\"", folder.c_str());
    return 1;
}

} // namespace tg
