#include "engine/hidden/Carrier.h"

#include <gtest/gtest.h>

#include "engine/hidden/Crypt.h"
#include "support/SampleCarrier.h"

namespace slyver {
namespace {

using namespace std::string_literals;

TEST(Carrier, StoresNamesThatComeBack) {
  const std::string n20(20, 'n');
  for (const auto& [name, stored] : {std::pair{n20 + "n.jpg", n20 + ".jpg"},
                                     {n20 + n20 + ".tar.gz", n20 + "n.gz"},
                                     {n20 + n20, n20 + "nnnn"},
                                     {"nn." + n20 + "nn", "n." + n20 + "nn"},
                                     {"n." + n20 + "nnn", "n." + n20 + "nn"},
                                     {"\u00E9\u20AC?*.bin"s, "\xE9\x80?*.bin"s},
                                     {"\u0416\xFF.bin"s, "__.bin"s},
                                     {"a\\b\n\x7F\0\u009D"s, "a_b____"s},
                                     {"c:a"s, "c_a"s},
                                     {"12:30"s, "12:30"s}}) {
    EXPECT_EQ(StoredName(name), stored);
    EXPECT_TRUE(IsBareFileName(stored)) << stored;
  }
}

TEST(Carrier, LaysFilesOutOneBehindTheOther) {
  const std::string big = "5000000000";
  const Directory directory(
      SampleDirectory(5000000000, SampleRecord(0, "\xE9", "7") + SampleRecord(1, "a", big)));
  const auto files = directory.Files(samplePassword, 10000002507);
  ASSERT_TRUE(files && files->size() == 2);
  EXPECT_EQ((*files)[0].name, "\u00E9");
  EXPECT_EQ((*files)[1].offset, 5000000007U);
  EXPECT_EQ((*files)[1].length, 5000000000U);
  EXPECT_FALSE(directory.Files(samplePassword, 10000002506)) << "one byte short";
  EXPECT_FALSE(directory.MainLength(samplePassword, 2499));
  for (const char* bad : {"", "0", "-1", "+7", " 7", "7x", "18446744073709551623"}) {
    const Directory wrong(SampleDirectory(5000000000, SampleRecord(0, "a", bad)));
    EXPECT_FALSE(wrong.Files(samplePassword, 10000002507)) << bad;
  }
  // Of a name longer than 24 characters an older program left half of the 25th: 5 xor "6".
  const std::string name = "575458595754585957545859575458595754585957545859";
  const Directory old(SampleDirectory(1, "[0dfg%]\r\n&hed#=" + name + "5\r\n?Kj*^=07\r\n"));
  EXPECT_EQ(old.Files(samplePassword, 2502).value().at(0).name, std::string(24, 'a') + "3");
}

TEST(Carrier, ReadsDamagedTextAsFarAsItIsHexadecimal) {
  // 7 xor 54; only the 4 counts; both pairs count as 0; lower case is hexadecimal too.
  for (const auto& [cipher, text] : {std::pair{"7", "1"}, {"4G", "2"}, {"G4zz", "65"}, {"7f", "I"}})
    EXPECT_EQ(DecryptText(cipher, "A"), text);
  EXPECT_THROW(EncryptText("A", ""), std::invalid_argument);
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
  WriteFile(path, SampleDirectory(1, SampleRecord(0, "a.bin", "7")));
  EXPECT_EQ(ErrorOf([&] { (void)Directory::OfCarrier(path); }),
            path.string() + ": The file is too short");
}

}  // namespace
}  // namespace slyver
