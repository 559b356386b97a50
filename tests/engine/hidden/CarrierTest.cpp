#include "engine/hidden/Carrier.h"

#include <gtest/gtest.h>

#include "support/SampleCarrier.h"

namespace slyver {
namespace {

using namespace std::string_literals;

TEST(Carrier, TakesBareFileNamesOnly) {
  for (const std::string& name :
       {"a"s, "my file.txt"s, "...a"s, "a..b"s, "con2"s, "com0"s, "com10"s, "auxiliary.txt"s,
        "12:30.log"s, "\xE9\x80.bin"s, "-rf"s, " a"s})
    EXPECT_TRUE(IsBareFileName(name)) << name;
  for (const std::string& name :
       {""s,    "."s,       ".."s,      "/etc/passwd"s, "../a"s,  "a/b"s,  "a\\b"s,  "..\\a"s,
        "c:a"s, "c:\\a"s,   "a\0b"s,    "a\nb"s,        "a\x1F"s, "\x7F"s, "\x9D"s,  "\x81 a"s,
        "aux"s, "AUX.txt"s, "nul.a.b"s, "prn "s,        "Con"s,   "com1"s, "lPt9.x"s})
    EXPECT_FALSE(IsBareFileName(name)) << name;
}

TEST(Carrier, BelievesNoLength) {
  const std::uint64_t length = 2500 + 100;  // so there are 100 bytes to share out
  const auto laysOut = [&](std::string_view main, const std::vector<Record>& records) {
    return LayOut(main, records, length).has_value();
  };
  EXPECT_TRUE(laysOut("10", {{"a", "90"}}));
  EXPECT_TRUE(laysOut("1", {{"a", "98"}, {"b", "1"}}));
  EXPECT_TRUE(laysOut("100", {}));
  EXPECT_FALSE(laysOut("101", {}));
  EXPECT_FALSE(laysOut("10", {{"a", "91"}}));
  EXPECT_FALSE(laysOut("10", {{"a", "1"}, {"b", "90"}}));
  EXPECT_FALSE(laysOut("1", {{"a", "1"}, {"..", "1"}})) << "one bad name spoils all";
  for (const char* bad : {"", "0", "00", "-1", "+1", " 1", "1 ", "1.0", "1e1", "0x1", "one", "1\n",
                          "18446744073709551615", "18446744073709551616", "18446744073709551606",
                          "99999999999999999999999999"}) {
    EXPECT_FALSE(laysOut(bad, {{"a", "1"}})) << bad;
    EXPECT_FALSE(laysOut("10", {{"a", "1"}, {"b", bad}})) << bad;
  }
  EXPECT_FALSE(LayOut("1", {}, 2500).has_value());
  EXPECT_FALSE(LayOut("1", {}, 2499).has_value());
}

TEST(Carrier, LaysFilesOutOneBehindTheOther) {
  const auto files = LayOut("5000000000", {{"\xE9", "7"}, {"b", "5000000000"}}, 10000002507);
  ASSERT_TRUE(files.has_value());
  ASSERT_EQ(files->size(), 2U);
  EXPECT_EQ((*files)[0].name, "\u00E9");
  EXPECT_EQ((*files)[0].offset, 5000000000U);
  EXPECT_EQ((*files)[1].offset, 5000000007U);
  EXPECT_EQ((*files)[1].length, 5000000000U);
}

TEST(Carrier, CountsByLengthAndListsByName) {
  const auto count = [](const std::string& text) { return CountRecords(DirectoryText(text)); };
  const auto listed = [](const std::string& text) {
    return ReadRecords(DirectoryText(text), samplePassword).size();
  };
  const std::string noLength = "[0dfg%]\r\n&hed#=00\r\n?Kj*^=00\r\n[1dfg%]\r\n&hed#=00\r\n";
  EXPECT_EQ(count(noLength), 1);
  EXPECT_EQ(listed(noLength), 2U);
  const std::string gap = "[0dfg%]\r\n&hed#=00\r\n?Kj*^=00\r\n[2dfg%]\r\n&hed#=00\r\n?Kj*^=00\r\n";
  EXPECT_EQ(count(gap), 1);
  EXPECT_EQ(listed(gap), 1U);
  EXPECT_EQ(count(SomeBytes(2500)), 0);
  EXPECT_EQ(count(""), 0);
}

TEST(Carrier, PadsTo2500Bytes) {
  EXPECT_EQ(Padded("k=v\r\n"), "k=v\r"s + std::string(2496, '\0'));
  const std::string text = std::string(2497, 'v') + "\r\n";
  EXPECT_EQ(Padded(text), std::string(2497, 'v') + "\r\0\0"s.substr(0, 3));
  for (const std::size_t length : {2500U, 2501U}) {
    const std::string full = std::string(length - 1, 'v') + "\n";
    EXPECT_EQ(Padded(full), full);
  }
}

class CarrierFile : public TempFolderTest {};

TEST_F(CarrierFile, HasItsDirectoryInTheLast2500Bytes) {
  const auto path = folder / "m.png";
  WriteFile(path, SampleCarrier(sampleMains[0], 1));
  EXPECT_EQ(ReadDirectoryText(path), SampleDirectory("07", sampleFiles[0].record));
  WriteFile(path, SampleDirectory("07", sampleFiles[0].record));
  EXPECT_EQ(ErrorOf([&] { ReadDirectoryText(path); }), path.string() + ": The file is too short");
}

TEST_F(CarrierFile, IsNotReadAsEmptyWhenItCannotBeRead) {
  const auto path = folder / "1.ini";
  EXPECT_EQ(ErrorOf([&] { (void)DirectoryFile(path); }),
            path.string() + ": No such file or directory");
  WriteFile(path, SampleDirectory("07", sampleFiles[0].record));
  const ValueReader directory = DirectoryFile(path);
  std::filesystem::remove(path);
  EXPECT_EQ(CountRecords(directory), 1) << "one reading serves all questions";
}

}  // namespace
}  // namespace slyver
