#include "engine/disk/WorkFolders.h"

#include <gtest/gtest.h>

#include <optional>

#include "engine/disk/Disk.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

using WorkFolders = TempFolderTest;

const WorkFiles files = {{"#.ini", "tempRRR.tmp*"}, "tempHHH"};

TEST_F(WorkFolders, AScratchFolderIsGoneAtTheEndAndEachJobHasItsOwn) {
  const fs::path work = folder / "TempRRR";
  {
    const ScratchFolder first(work, files);
    WriteFile(first.Path() / "1.ini", "x");
    std::optional<ScratchFolder> second(std::in_place, work, files);
    const ScratchFolder third(work, files);
    EXPECT_EQ(Names(), (std::set<std::string>{"TempRRR", "TempRRR.1", "TempRRR.2"}));
    second.reset();
    EXPECT_EQ(ScratchFolder(work, files).Path(), folder / "TempRRR.1");
    EXPECT_EQ(ReadFile(work / "1.ini"), "x");
  }
  EXPECT_EQ(Names(), std::set<std::string>{});
}

TEST_F(WorkFolders, WhatAKilledJobHasLeftGoesAndNothingElse) {
  const fs::path work = folder / "TempRRR";
  for (const char* name : {"TempRRR", "TempRRR.2"}) {
    fs::create_directories(folder / name / "tempHHH");
    for (const char* file : {"slyver.lock", "1.ini", "1.02.ini", "tempRRR.tmp.01", ".slyver-1.tmp",
                             "tempHHH/slyver.lock", "tempHHH/3.ini"})
      WriteFile(folder / name / file, "x");
  }
  EXPECT_EQ(ScratchFolder(work, files).Path(), work);
  EXPECT_EQ(Names(), std::set<std::string>{});
  for (const auto& [name, locked] : {std::pair{"1.ini", false},
                                     {"letter.txt", false},
                                     {"letter.txt", true},
                                     {"sub/1.ini", true}}) {
    fs::create_directories((work / name).parent_path());
    WriteFile(work / name, "precious");
    if (locked) WriteFile(work / "slyver.lock", "");
    EXPECT_EQ(ErrorOf([&] { const ScratchFolder scratch(work, files); }),
              PathText(work) + " Holds Other Files. Move Them Away.")
        << name;
    EXPECT_EQ(ReadFile(work / name), "precious");
    fs::remove_all(work);
  }
  {
    const ScratchFolder scratch(work, files);
    WriteFile(work / "letter.txt", "precious");
    WriteFile(work / "1.ini", "x");
  }
  EXPECT_EQ(Names(work), std::set<std::string>{"letter.txt"});
}

TEST_F(WorkFolders, MakesEveryFolderFollowedByASeparatorAndRemovesEmptyOnes) {
  const fs::path deep = folder / "a" / "b" / "c";
  {
    NewFolders created;
    EXPECT_TRUE(MakeSureDirectoryPathExists(deep, created));
    EXPECT_EQ(Names(folder / "a" / "b"), std::set<std::string>{});
  }
  EXPECT_FALSE(fs::exists(folder / "a"));
  NewFolders created;
  EXPECT_TRUE(MakeSureDirectoryPathExists(WithSeparator(WithSeparator(deep)), created));
  EXPECT_TRUE(fs::is_directory(deep));
  WriteFile(deep / "file", "x");
  EXPECT_FALSE(MakeSureDirectoryPathExists(deep / "file" / "x" / "", created));
}

}  // namespace
}  // namespace slyver
