#include "engine/system/WorkFolders.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>

#include "engine/system/Disk.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

class WorkFolders : public TempFolderTest {
 protected:
  /// What `ScratchFolder` says of "TempRRR" in the folder.
  std::string Refusal() const {
    try {
      const ScratchFolder scratch(work);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "none";
  }
  void SetUp() override {
    TempFolderTest::SetUp();
    work = folder / "TempRRR";
  }

  fs::path work;
};

TEST_F(WorkFolders, AScratchFolderIsGoneAtTheEndAndEachJobHasItsOwn) {
  {
    const ScratchFolder first(work);
    WriteFile(first.Path() / "1.ini", "x");
    std::optional<ScratchFolder> second(work);
    const ScratchFolder third(work);
    EXPECT_EQ(Names(), (std::set<std::string>{"TempRRR", "TempRRR.1", "TempRRR.2"}));
    second.reset();
    EXPECT_EQ(ScratchFolder(work).Path(), folder / "TempRRR.1");
    EXPECT_EQ(ReadFile(work / "1.ini"), "x");
  }
  EXPECT_EQ(Names(), std::set<std::string>{});
}

TEST_F(WorkFolders, WhatAKilledJobHasLeftGoesAndNothingElse) {
  // As a killed job leaves them.
  for (const char* name : {"TempRRR", "TempRRR.2"}) {
    fs::create_directories(folder / name / "tempHHH");
    for (const char* file : {"slyver.lock", "1.ini", "1.02.ini", "tempRRR.tmp.01", ".slyver-1.tmp",
                             "tempHHH/slyver.lock", "tempHHH/3.ini"})
      WriteFile(folder / name / file, "x");
  }
  EXPECT_EQ(ScratchFolder(work).Path(), work);
  EXPECT_EQ(Names(), std::set<std::string>{});
  fs::create_directory(work);
  EXPECT_EQ(Refusal(), "none") << "killed before it could lock it";

  fs::create_directory(folder / "user");
  WriteFile(folder / "user" / "slyver.lock", "precious");
  for (const auto& [name, locked] : {std::pair{"1.ini", false},
                                     {"letter.txt", false},
                                     {"letter.txt", true},
                                     {"sub/1.ini", true}}) {
    fs::create_directories((work / name).parent_path());
    WriteFile(work / name, "precious");
    if (locked) WriteFile(work / "slyver.lock", "");
    EXPECT_EQ(Refusal(), PathText(work) + " Holds Other Files. Move Them Away.") << name;
    EXPECT_EQ(ReadFile(work / name), "precious");
    fs::remove_all(work);
  }
  {
    const ScratchFolder scratch(work);
    WriteFile(work / "letter.txt", "precious");
    WriteFile(work / "1.ini", "x");
  }
  EXPECT_EQ(Names(work), std::set<std::string>{"letter.txt"});
  fs::remove_all(work);
  WriteFile(work, "precious");
  EXPECT_EQ(Refusal(), work.string() + ": File exists");
  fs::remove(work);
  if (MakeFolderLink(folder / "user", work)) {
    EXPECT_EQ(Refusal(), work.string() + ": File exists");
  }
  EXPECT_EQ(ReadFile(folder / "user" / "slyver.lock"), "precious");
}

TEST_F(WorkFolders, MakesEveryFolderFollowedByASeparator) {
  EXPECT_TRUE(MakeSureDirectoryPathExists(folder / "a" / "b" / "c"));
  EXPECT_EQ(Names(folder / "a" / "b"), std::set<std::string>{});
  EXPECT_TRUE(MakeSureDirectoryPathExists(WithSeparator(folder / "a" / "b" / "c")));
  EXPECT_TRUE(fs::is_directory(folder / "a" / "b" / "c"));
  WriteFile(folder / "file", "x");
  EXPECT_FALSE(MakeSureDirectoryPathExists(folder / "file" / "x" / ""));
  EXPECT_EQ(WithSeparator("a"), fs::path("a") / "");
  EXPECT_EQ(WithSeparator(fs::path("a") / ""), fs::path("a") / "");
}

}  // namespace
}  // namespace slyver
