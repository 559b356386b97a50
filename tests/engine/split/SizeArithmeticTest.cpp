#include "engine/split/SizeArithmetic.h"

#include "support/TempFolder.h"

namespace slyver {
namespace {

/// What the other field shows then: "!" for the marker and "same" where it stays as it is.
std::string Other(const FieldChange& change) {
  return change.other == unableToDivide ? "!" : change.other.value_or("same");
}

TEST(SizeArithmetic, DividesTheLengthBySizeOrCountRoundedUp) {
  constexpr std::uint64_t tebibyte = std::uint64_t{1} << 40U;
  constexpr std::uint64_t beyondDoubles = 9007199254740993;
  const std::vector<std::pair<std::uint64_t, std::string>> cases = {
      {1000, "3=334 4=250 999=2 1000=! 3.=334 1000.=! 008=125 0.5=! 1000.5=! x=!"},
      {0, "2=!"},
      {tebibyte + 1, "3=366503875926 1000=1099511628"},  // ...925.67, ...27.777
      {beyondDoubles * 2, "9007199254740993=2"},
      {beyondDoubles * 2 + 1, "9007199254740993=3"}};
  for (const auto& [length, pairs] : cases)
    for (const auto& [typed, other] : PairsIn(pairs))
      for (const auto& change : {SizeFromCount(typed, "", length), CountFromSize(typed, length)}) {
        EXPECT_EQ(Other(change), other) << typed << " of " << length;
        EXPECT_EQ(change.askForWholeNumber, typed.ends_with('.')) << typed;
      }
}

TEST(SizeArithmetic, TreatsOneNoneAndTheMarkerApart) {
  EXPECT_EQ(Other(SizeFromCount("1", "", 1000)), "!");
  EXPECT_EQ(Other(SizeFromCount("3", unableToDivide, 1000)), "same");
  EXPECT_EQ(Other(SizeFromCount("", unableToDivide, 1000)), "");
  EXPECT_EQ(Other(SizeFromCount("0", "334", 1000)), "");
  EXPECT_FALSE(SizeFromCount("0", "334", 1000).clearTyped);
  EXPECT_EQ(Other(CountFromSize("1", 1000)), "same");
  // A size is cut as whole bytes, a number of pieces gives one.
  EXPECT_EQ(Other(SizeFromCount("2.4", "", 1000)), "417");
  EXPECT_EQ(Other(CountFromSize("2.4", 1000)), "500");
  EXPECT_EQ(Other(CountFromSize(unableToDivide, 1000)), "same");
  for (const char* none : {"", "0"}) {
    EXPECT_EQ(Other(CountFromSize(none, 1000)), "");
    EXPECT_TRUE(CountFromSize(none, 1000).clearTyped);
  }
}

TEST(SizeArithmetic, RoundsAPieceSizeToWholeBytes) {
  for (const auto& [text, bytes] :
       PairsIn("334.=334 0=0 2.4=2 2.5=2 3.5=4 1e3=1000 9007199254740993=9007199254740993 "
               "18446744073709551615=18446744073709551615 18446744073709551616=none nan=none "
               "-1=none abc=none 12x=none =none .=none")) {
    const std::optional<std::uint64_t> size = WholeBytes(text);
    EXPECT_EQ(size ? std::to_string(*size) : "none", bytes) << text;
  }
}

}  // namespace
}  // namespace slyver
