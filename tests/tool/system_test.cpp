// What the exporter asks of Windows: files that others read meanwhile, and devices.
#include <gtest/gtest.h>
#include <windows.h>

#include <set>
#include <string>

#include "tool/serve/DiskFiles.h"
#include "tool/system/DisplayDevices.h"
#include "tool/values/Errors.h"

using namespace gputune::tool;

namespace {

constexpr char const* kFile = "metrics.prom";

// A program that reads the file, and lets others do this meanwhile.
class Reader {
public:
    explicit Reader(DWORD sharing)
        : handle_(CreateFileA(kFile, GENERIC_READ, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
    }
    ~Reader() { CloseHandle(handle_); }
    Reader(Reader const&) = delete;
    Reader& operator=(Reader const&) = delete;

    std::string Read() const {
        char text[100];
        DWORD size = 0;
        EXPECT_TRUE(ReadFile(handle_, text, sizeof(text), &size, nullptr));
        return {text, size};
    }

private:
    HANDLE handle_;
};

TEST(DiskFilesTest, FileIsReplacedAsAWhole) {
    DiskFiles disk;
    disk.Replace(kFile, "old");
    disk.Replace(kFile, "new");
    EXPECT_EQ(ReadTextFile(kFile, 100), "new");
    EXPECT_FALSE(FileExists(std::string(kFile) + ".part"));
    disk.Remove(kFile);
    EXPECT_FALSE(FileExists(kFile));
    disk.Remove(kFile);
}

TEST(DiskFilesTest, WhoReadsTheFileMeanwhileKeepsTheOldText) {
    DiskFiles disk;
    constexpr DWORD kRead = FILE_SHARE_READ;
    constexpr DWORD kWrite = FILE_SHARE_WRITE;
    constexpr DWORD kDelete = FILE_SHARE_DELETE;
    for (DWORD const sharing : {kRead, kRead | kWrite, kRead | kWrite | kDelete}) {
        disk.Replace(kFile, "old");
        {
            Reader const reader(sharing);
            try {
                disk.Replace(kFile, "new");
                // Some systems can replace a file that others hold open in this way.
                EXPECT_NE(sharing & kDelete, 0U);
            } catch (ToolError const&) {
                EXPECT_EQ(ReadTextFile(kFile, 100), "old");
            }
            EXPECT_EQ(reader.Read(), "old");
            EXPECT_FALSE(FileExists(std::string(kFile) + ".part"));
        }
        disk.Replace(kFile, "new");
        EXPECT_EQ(ReadTextFile(kFile, 100), "new");
    }
}

TEST(DiskFilesTest, FolderThatDoesNotExistIsNamed) {
    DiskFiles disk;
    TextFile file("nowhere", disk);
    std::optional<std::string> const said = file.Write("text");
    ASSERT_TRUE(said);
    EXPECT_NE(said->find("nowhere\\gputune.prom: "), std::string::npos) << *said;
    ASSERT_TRUE(CreateDirectoryA("nowhere", nullptr));
    EXPECT_TRUE(file.Write("text"));
    EXPECT_TRUE(FileExists("nowhere\\gputune.prom"));
}

// Which there are depends on the machine; Wine has some once it has a desktop, and tells nothing of their power.
TEST(DisplayDevicesTest, EveryDeviceIsToldOnceAndStaysTheSame) {
    DisplayDevices devices;
    std::vector<DisplayDevice> const first = devices.Read();
    std::vector<DisplayDevice> const second = devices.Read();
    std::set<std::string> ids;
    ASSERT_EQ(second.size(), first.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_TRUE(ids.insert(first[i].id).second) << first[i].id;
        EXPECT_NE(first[i].id.find('\\'), std::string::npos) << first[i].id;
        EXPECT_EQ(second[i].id, first[i].id);
    }
}

}  // namespace
