#include "engine/age/Age.h"

#include <gtest/gtest.h>

#include "support/SampleAge.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

/// The plain bytes of a file, or why there are none.
std::string Opened(std::string_view file, std::string_view passphrase) try {
  const auto header = ReadAgeHeader(file.substr(0, ageHeaderRoom), file.size(), "N");
  if (!header) return "for keys";
  return Decrypted(file, *header, passphrase).value_or("wrong");
} catch (const std::exception& error) {
  return error.what();
}

TEST(Age, OpensThePublishedFileAndNoOtherFormOfIt) {
  EXPECT_EQ(Opened(sampleAge, sampleAgePassphrase), "age");
  EXPECT_EQ(Opened(sampleAge, "Password"), "wrong");
  for (std::size_t i = 0; i < sampleAge.size(); ++i) {
    std::string changed = sampleAge;
    changed[i] = static_cast<char>(changed[i] ^ 1);
    const std::string result = Opened(changed, sampleAgePassphrase);
    EXPECT_TRUE(result == "N Is Damaged." || result == "wrong" || result == "for keys") << i;
    EXPECT_EQ(Opened(sampleAge.substr(0, i), sampleAgePassphrase), "N Is Damaged.") << i;
  }
  EXPECT_EQ(Opened(sampleAge + '\0', sampleAgePassphrase), "N Is Damaged.");
}

TEST(Age, ReadsHeadersToTheLetter) {
  const auto with = [](const std::string& part, const std::string& instead) {
    std::string file = sampleAge;
    return Opened(file.replace(file.find(part), part.size(), instead), sampleAgePassphrase);
  };
  const std::vector<std::pair<std::string, std::vector<std::string>>> damaged = {
      {" 10\n", {" 010\n", " +10\n", " 0xA\n", " 10 \n", " 10 x\n", "\n", " 10\r\n"}},
      {"5CQ ", {"5CR ", "5CQ= ", "5CQAAAA "}},  // The first one's digits no writer makes.
      {"aUY\n", {"aUYAAAA\n", "aUY\n-> X25519 A\n\n", "aUY\n\n"}},
      {"--- ", {"---", "---  "}}};
  for (const auto& [part, forms] : damaged)
    for (const std::string& form : forms) EXPECT_EQ(with(part, form), "N Is Damaged.") << form;
  EXPECT_EQ(with("scrypt", "X25519"), "for keys");
  for (const std::string factor : {"21", "99999999999"})
    EXPECT_EQ(with(" 10\n", " " + factor + "\n"),
              "N Needs Too Much Memory (Work Factor " + factor + "; Limit 20).");
  // Where a header is longer than what is read of it, it has many keys.
  std::string file = "age-encryption.org/v1\n";
  while (file.size() <= ageHeaderRoom) file += "-> X25519 A\n\n";
  EXPECT_EQ(Opened(file, sampleAgePassphrase), "for keys");
}

TEST(Age, NoChunkCanBeTakenAwayOrMoved) {
  EXPECT_NE(AgeFileOf("x", "p"), AgeFileOf("x", "p")) << "not random";
  const std::string plain = SomeBytes(std::size_t{3} * 65536);
  const std::size_t sealed = 65536 + 16;
  for (const std::size_t length : {0U, 1U, 65535U, 65536U, 65537U, 2 * 65536U, 3 * 65536U}) {
    const std::string file = AgeFileOf(plain.substr(0, length), "\u00E9 \n");
    EXPECT_TRUE(Opened(file, "\u00E9 \n") == plain.substr(0, length)) << length;
    std::string changed = file;
    changed.back() = static_cast<char>(changed.back() ^ 1);
    EXPECT_EQ(Opened(changed, "\u00E9 \n"), "N Is Damaged.") << length;
    if (length < plain.size() / 3 * 2) continue;
    std::string moved = file;
    std::swap_ranges(moved.end() - sealed, moved.end(), moved.end() - 2 * sealed);
    for (const std::string& wrong :
         {moved, file.substr(0, file.size() - sealed), file + file.substr(file.size() - sealed)})
      EXPECT_EQ(Opened(wrong, "\u00E9 \n"), "N Is Damaged.");
  }
}

TEST(Age, AnyPartsMakeTheSameBytes) {
  const std::string plain = SomeBytes(std::size_t{3} * 65536 + 5);
  const auto sealed = EncryptedWithAge(std::make_shared<TextSource>(plain), "p", 1);
  const std::string file = TextOf(*sealed);
  for (const std::size_t step : {999U, 65551U, 65552U, 131072U, 1000000U})
    EXPECT_TRUE(TextOf(*sealed, step) == file) << step;
  // Parts that end where it says make no chunk twice.
  const std::size_t header = file.size() - plain.size() - std::size_t{4} * 16;
  EXPECT_EQ(sealed->Cut(0, 100), 100U);
  EXPECT_EQ(sealed->Cut(0, 131072), header + 65552);
  EXPECT_EQ(sealed->Cut(header + 65552, header + 65552 + 131072), header + std::size_t{2} * 65552);
}

}  // namespace
}  // namespace slyver
