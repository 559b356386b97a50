#include "engine/hidden/Carrier.h"

#include <gtest/gtest.h>

#include "support/SampleCarrier.h"

namespace slyver {
namespace {

using namespace std::string_literals;

TEST(Carrier, TakesBareFileNamesOnly) {
  for (const std::string& name :
       {"a"s, "my file.txt"s, "...a"s, "a..b"s, "12:30.log"s, "\xE9\x80.bin"s, " a"s, "nul.txt"s})
    EXPECT_TRUE(IsBareFileName(name)) << name;
  for (const std::string& name : {""s, "."s, ".."s, "/etc/passwd"s, "../a"s, "a\\b"s, "c:a"s,
                                  "a\0b"s, "a\nb"s, "a\x1F"s, "\x7F"s, "\x9D"s, "\x81 a"s})
    EXPECT_FALSE(IsBareFileName(name)) << name;
}

TEST(Carrier, StoresNamesThatComeBack) {
  const std::string n20(20, 'n');
  for (const auto& [name, stored] : {std::pair{n20 + ".jpg", n20 + ".jpg"},
                                     {n20 + "n.jpg", n20 + ".jpg"},
                                     {n20 + n20 + ".tar.gz", n20 + "n.gz"},
                                     {n20 + n20, n20 + "nnnn"},
                                     {"a.b" + n20 + ".c", "a.b" + n20.substr(1) + ".c"},
                                     {"nn." + n20 + "nn", "n." + n20 + "nn"},
                                     {"n." + n20 + "nnn", "n." + n20 + "nn"},
                                     {"\u00E9\u20AC?*.bin"s, "\xE9\x80?*.bin"s},
                                     {"\u0416\xFF.bin"s, "__.bin"s},
                                     {"a\\b\n\x7F"s, "a_b__"s},
                                     {"c:a"s, "c_a"s},
                                     {"12:30"s, "12:30"s}}) {
    EXPECT_EQ(StoredName(name), stored);
    EXPECT_TRUE(IsBareFileName(stored)) << stored;
  }
}

TEST(Carrier, LaysFilesOutOneBehindTheOther) {
  const auto record = [](int i, const std::string& name, const std::string& length) {
    return "[" + std::to_string(i) + "dfg%]\r\n&hed#=" + Enciphered(name) +
           "\r\n?Kj*^=" + Enciphered(length) + "\r\n";
  };
  const Directory directory(SampleDirectory(Enciphered("5000000000"),
                                            record(0, "\xE9", "7") + record(1, "b", "5000000000")));
  const auto files = directory.Files(samplePassword, 10000002507);
  ASSERT_TRUE(files && files->size() == 2);
  EXPECT_EQ((*files)[0].name, "\u00E9");
  EXPECT_EQ((*files)[0].offset, 5000000000U);
  EXPECT_EQ((*files)[1].offset, 5000000007U);
  EXPECT_EQ((*files)[1].length, 5000000000U);
  EXPECT_FALSE(directory.Files(samplePassword, 10000002506)) << "one byte short";
  EXPECT_FALSE(directory.MainLength(samplePassword, 2499));
}

TEST(Carrier, CountsByLengthOrByName) {
  const std::string first = "[0dfg%]\r\n&hed#=00\r\n?Kj*^=00\r\n";
  for (const auto& [text, lengths, names] : {std::tuple{first + "[1dfg%]\r\n&hed#=00\r\n", 1, 2},
                                             {first + "[2dfg%]\r\n&hed#=00\r\n?Kj*^=00\r\n", 1, 1},
                                             {SomeBytes(2500), 0, 0}}) {
    EXPECT_EQ(Directory(text).Count(lengthKey), lengths) << text;
    EXPECT_EQ(Directory(text).Count(nameKey), names) << text;
  }
}

TEST(Carrier, PadsTo2500Bytes) {
  EXPECT_EQ(Padded("k=v\r\n"), "k=v\r"s + std::string(2496, '\0'));
  EXPECT_EQ(Padded(std::string(2498, 'v') + "\n"), std::string(2498, 'v') + "\0\0"s);
  for (const std::size_t length : {2500U, 2501U})
    EXPECT_EQ(Padded(std::string(length, '\n')), std::string(length, '\n'));
}

TEST_F(TempFolderTest, ADirectoryThatCannotBeReadIsNotAnEmptyOne) {
  const auto path = folder / "m.png";
  EXPECT_EQ(ErrorOf([&] { (void)Directory::InFile(path); }),
            path.string() + ": No such file or directory");
  WriteFile(path, SampleDirectory("07", sampleFiles[0].record));
  EXPECT_EQ(ErrorOf([&] { (void)Directory::OfCarrier(path); }),
            path.string() + ": The file is too short");
}

}  // namespace
}  // namespace slyver
