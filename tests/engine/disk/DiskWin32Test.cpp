#include "engine/disk/Disk.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "engine/disk/Attributes.h"
#include "engine/disk/Files.h"
#include "engine/disk/SourceFile.h"
#include "engine/disk/WorkFolders.h"
#include "engine/split/JoinM.h"
#include "engine/split/SplitM.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

using Disk = TempFolderTest;

/// Jobs in a folder whose path is longer than the old limit, with names in several scripts.
TEST_F(Disk, PathsOfAnyLengthAndScriptServeJobs) {
  fs::path deep = folder;
  for (int i = 0; i < 6; ++i) deep /= PathFromText("\u0416\u65E5\U0001F600" + std::string(70, 'x'));
  fs::create_directories(deep);
  ASSERT_GT(deep.native().size(), 450U);
  const fs::path source = deep / PathFromText("\u00E9\u0416.bin");
  WriteSmallFile(source, SomeBytes(5000));
  EXPECT_EQ(FullPathOf(source), source);

  ScriptedUi ui;
  SplitOptions options;
  options.outputFolder = deep;
  EXPECT_EQ(SplitFile(source, 2000, options, ui).pieces, 3);
  const fs::path kept = deep / "kept.bin";
  RenameFile(source, kept);
  ui.Expect({"p Joining Files", "i File Joined.", "end"});
  EXPECT_EQ(
      JoinPieces(deep / PathFromText("\u00E9\u0416.bin.2.sly"), ui).value_or(JoinedFile{}).path,
      source);
  EXPECT_EQ(ReadSmallFile(source), SomeBytes(5000));

  std::vector<std::string> names;
  EXPECT_FALSE(
      ListFolder(deep, [&](const std::string& name, EntryKind) { names.push_back(name); }));
  for (const std::string& name : names) EXPECT_FALSE(RemoveFile(deep / PathFromText(name)));
  for (; deep != folder; deep = deep.parent_path()) EXPECT_FALSE(RemoveEmptyFolder(deep));
}

TEST_F(Disk, ReadOnlyFilesAreRemovedAndNeverReplaced) {
  const auto set = [](const fs::path& path, DWORD attributes) {
    EXPECT_TRUE(SetFileAttributesW(path.c_str(), attributes)) << path;
  };
  const fs::path old = folder / "work";
  fs::create_directory(old);
  WriteFile(old / "file", "x");
  for (const fs::path& path : {old / "file", old})
    set(path, FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  EXPECT_FALSE(RemoveFile(old / "file"));
  EXPECT_FALSE(RemoveEmptyFolder(old));
  EXPECT_EQ(Names(), std::set<std::string>{});

  const fs::path file = folder / "file";
  WriteFile(file, "old");
  set(file, FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE);
  EXPECT_EQ(ErrorOf([&] { WriteSmallFile(file, "new"); }),
            file.string() + ": The file is read-only and cannot be replaced");
  EXPECT_EQ(ReadFile(file), "old");
  ClearAttributes(file);
  EXPECT_EQ(GetFileAttributesW(file.c_str()), DWORD{FILE_ATTRIBUTE_ARCHIVE});
  WriteSmallFile(file, "new");
  EXPECT_EQ(ReadFile(file), "new");
}

TEST_F(Disk, FilesInUseElsewhereAreNeitherReadNorReplacedNorHalfWritten) {
  const fs::path file = folder / "file";
  WriteFile(file, "old");
  const auto open = [&](DWORD share) {
    return CreateFileW(file.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
  };
  HANDLE other = open(0);
  EXPECT_EQ(ErrorOf([&] { (void)ReadSmallFile(file); }),
            file.string() + ": Another program is using this file");
  CloseHandle(other);

  other = open(FILE_SHARE_READ);
  EXPECT_EQ(ReadSmallFile(file), "old");
  EXPECT_NE(ErrorOf([&] { WriteSmallFile(file, "new"); }), "no error");
  CloseHandle(other);
  EXPECT_EQ(ReadFile(file), "old");
  EXPECT_EQ(Names(), std::set<std::string>{"file"});

  const SourceFile source(file);
  WriteFile(file, "other bytes");
  fs::rename(file, folder / "moved");
  EXPECT_THROW(source.ThrowIfChanged(), FileError) << "who reads a file hinders nobody";
}

TEST_F(Disk, NamesThatWindowsCannotBearAreRefused) {
  const fs::path file = folder / "file";
  WriteFile(file, "x");
  for (const wchar_t* name :
       {L"aa:b", L"file:stream", L"a*", L"a?", L"a<b", L"a>b", L"a|b", L"a\"b", L"a\tb", L"a.",
        L"a ", L"NUL", L"con", L"com1.txt", L"..."}) {
    const fs::path target = folder / name;
    const std::string refusal = PathText(target) + ": Windows does not allow this name";
    EXPECT_EQ(ErrorOf([&] { WriteSmallFile(target, "x"); }), refusal);
    EXPECT_EQ(ErrorOf([&] { (void)MoveToFreeName(file, target, target); }), refusal);
  }
  EXPECT_EQ(Names(), std::set<std::string>{"file"});
  EXPECT_EQ(ReadFile(file), "x");
}

TEST_F(Disk, TypedNamesBecomeThoseOnTheDisk) {
  WriteFile(folder / "Mixed Case.BIN", "x");
  const std::string typed = (folder / "sub" / ".." / "mixed case.bin").generic_string();
  EXPECT_EQ(FullPathOf(typed), folder / "Mixed Case.BIN");
  EXPECT_EQ(FullPathOf("C:\\"), fs::path("C:\\"));
}

}  // namespace
}  // namespace slyver
