// A temporary folder for a test, removed with everything in it when the object goes.
#pragma once

#include <string>

namespace tg::test {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    // path() + "/" + name
    std::string file(const std::string& name) const;

private:
    std::string path_;
};

// Reads a whole file; empty when it cannot be read.
std::string readFileBytes(const std::string& path);
// Writes bytes to a file, replacing it; false on failure.
bool writeFileBytes(const std::string& path, const std::string& bytes);

} // namespace tg::test
