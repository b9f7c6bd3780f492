// A WAV or AIFF file being replaced stays as it was when the disk fills up half way through
// writing the new one.
#include "audiofile/AiffFile.h"
#include "audiofile/WavFile.h"

#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using namespace tg;

namespace {

using Writer = std::function<int(const std::string& path, const std::vector<uint8_t>& data,
                                 std::string& message)>;

struct WriterCase {
    const char* name;
    Writer write;
    const char* fullDiskMessage; // before the path
};

const WriterCase kWriters[] = {
    {"wav",
     [](const std::string& path, const std::vector<uint8_t>& data, std::string& message) {
         return writeWav(path, makeWaveFormat(44100, 2, 16), data, message);
     },
     "error writing "},
    {"aif",
     [](const std::string& path, const std::vector<uint8_t>& data, std::string& message) {
         return writeAiff(path, makeWaveFormat(44100, 2, 16), data.data(), int32_t(data.size()), 0,
                          0, {}, message);
     },
     "Error writing sound data to file (\""},
};

size_t entriesIn(const std::string& folder)
{
    size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder))
        ++count;
    return count;
}

} // namespace

TEST(AudioWriters, FullDiskHalfWayKeepsTheFileThatWasThere)
{
    for (const WriterCase& writer : kWriters) {
        SCOPED_TRACE(writer.name);
        test::TempDir dir;
        const std::string path = dir.file(std::string("take.") + writer.name);
        std::string message;
        ASSERT_TRUE(writer.write(path, std::vector<uint8_t>(4000, 0x11), message)) << message;
        const std::string before = test::readFileBytes(path);

        int written = 1;
        {
            test::FileSizeLimit full(64 * 1024);
            ASSERT_TRUE(full.active());
            written = writer.write(path, std::vector<uint8_t>(400 * 1024, 0x22), message);
        }
        EXPECT_EQ(written, 0);
        std::string expected = writer.fullDiskMessage + path;
        if (expected.find('"') != std::string::npos)
            expected += "\")";
        EXPECT_EQ(message, expected);
        EXPECT_EQ(test::readFileBytes(path), before);
        EXPECT_EQ(entriesIn(dir.path()), 1u); // the partial file is gone
    }
}
