// The metrics in a file: what the user is told, and what stays behind.
#include "tool/serve/TextFile.h"

#include <gtest/gtest.h>

#include <map>

#include "tool/values/Errors.h"

using namespace gputune::tool;

namespace {

struct FakeDisk : TextFilePort {
    std::map<std::string, std::string> files{};
    bool fails = false;

    void Replace(std::string const& path, std::string const& text) override {
        if (fails) {
            throw ToolError(path + ": no such folder.");
        }
        files[path] = text;
    }
    void Remove(std::string const& path) override {
        if (fails) {
            throw ToolError(path + ": no such folder.");
        }
        files.erase(path);
    }
};

TEST(TextFileTest, IsReplacedAndAtTheEndRemoved) {
    FakeDisk disk;
    {
        TextFile file("C:\\metrics", disk);
        EXPECT_TRUE(disk.files.empty());
        EXPECT_FALSE(file.Write("one"));
        EXPECT_FALSE(file.Write("two"));
        EXPECT_EQ(disk.files, (std::map<std::string, std::string>{{"C:\\metrics\\gputune.prom", "two"}}));
    }
    EXPECT_TRUE(disk.files.empty());
}

TEST(TextFileTest, FolderMayEndWithItsSeparator) {
    FakeDisk disk;
    EXPECT_EQ(TextFile("C:\\metrics\\", disk).Path(), "C:\\metrics\\gputune.prom");
    EXPECT_EQ(TextFile("C:/metrics/", disk).Path(), "C:/metrics/gputune.prom");
}

TEST(TextFileTest, WhatAnEarlierExporterLeftIsRemovedAtTheStart) {
    FakeDisk disk;
    disk.files["C:\\metrics\\gputune.prom"] = "old";
    TextFile const file("C:\\metrics", disk);
    EXPECT_TRUE(disk.files.empty());
}

TEST(TextFileTest, FolderThatDoesNotExistIsToldOnceAndTriedAgain) {
    FakeDisk disk;
    disk.fails = true;
    TextFile file("C:\\metrics", disk);
    EXPECT_EQ(file.Write("one"),
              "The metrics cannot be written; this is tried again with every sample. "
              "C:\\metrics\\gputune.prom: no such folder.");
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(file.Write("one"));
    }
    disk.fails = false;
    EXPECT_EQ(file.Write("two"), "The metrics are written again: C:\\metrics\\gputune.prom");
    EXPECT_FALSE(file.Write("three"));
    EXPECT_EQ(disk.files["C:\\metrics\\gputune.prom"], "three");
}

TEST(TextFileTest, FileThatIsBeingReadIsNoReasonToComplain) {
    FakeDisk disk;
    TextFile file("C:\\metrics", disk);
    EXPECT_FALSE(file.Write("one"));
    disk.fails = true;
    EXPECT_FALSE(file.Write("two"));
    EXPECT_FALSE(file.Write("three"));
    disk.fails = false;
    EXPECT_FALSE(file.Write("four"));
    disk.fails = true;
    EXPECT_FALSE(file.Write("five"));
    EXPECT_FALSE(file.Write("six"));
    EXPECT_TRUE(file.Write("seven"));
    EXPECT_FALSE(file.Write("eight"));
}

}  // namespace
