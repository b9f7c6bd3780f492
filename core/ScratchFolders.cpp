#include "core/ScratchFolders.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <vector>

namespace tg {

namespace {
std::mutex gMutex;
std::vector<std::filesystem::path> gFolders;

// Without a trailing separator, so that "/tmp/stage/" and "/tmp/stage" name one folder.
std::filesystem::path normal(const std::string& path)
{
    std::filesystem::path p = std::filesystem::path(path).lexically_normal();
    if (!p.has_filename() && p != p.root_path())
        p = p.parent_path();
    return p;
}

// Compares whole names, so that "/tmp/a" does not contain "/tmp/ab/file".
bool contains(const std::filesystem::path& folder, const std::filesystem::path& path)
{
    auto f = folder.begin();
    auto p = path.begin();
    for (; f != folder.end(); ++f, ++p)
        if (p == path.end() || *f != *p)
            return false;
    return p != path.end() && !p->empty();
}
} // namespace

void addScratchFolder(const std::string& folder)
{
    const std::lock_guard<std::mutex> lock(gMutex);
    gFolders.push_back(normal(folder));
}

void removeScratchFolder(const std::string& folder)
{
    const std::lock_guard<std::mutex> lock(gMutex);
    const auto it = std::find(gFolders.begin(), gFolders.end(), normal(folder));
    if (it != gFolders.end())
        gFolders.erase(it);
}

bool isInScratchFolder(const std::string& path)
{
    const std::filesystem::path target = normal(path);
    const std::lock_guard<std::mutex> lock(gMutex);
    return std::any_of(gFolders.begin(), gFolders.end(), [&](const std::filesystem::path& folder) {
        return contains(folder, target);
    });
}

} // namespace tg
