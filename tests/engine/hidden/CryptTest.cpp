#include "engine/hidden/Crypt.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace slyver {
namespace {

// The expected texts are worked by hand: "A" has the code 65, so its key is the characters "6" (54)
// and "5" (53), again and again.
TEST(Crypt, EnciphersToHandWorkedText) {
  for (const auto& [text, password, cipher] : {std::tuple{"A", "A", "77"},
                                               {"AB", "A", "7777"},
                                               {"666", "A", "000300"},
                                               {"\xE9", "Ab", "DF"},
                                               {"", "", ""}})
    EXPECT_EQ(EncryptText(text, password), cipher);
  EXPECT_THROW(EncryptText("A", ""), std::invalid_argument);
}

TEST(Crypt, ReadsDamagedTextAsFarAsItIsHexadecimal) {
  // 7 xor 54; only the 4 counts; both pairs count as 0; lower case is hexadecimal too.
  for (const auto& [cipher, text] : {std::pair{"7", "1"}, {"4G", "2"}, {"G4zz", "65"}, {"7f", "I"}})
    EXPECT_EQ(DecryptText(cipher, "A"), text);
}

}  // namespace
}  // namespace slyver
