#include "engine/split/SizeArithmetic.h"

#include <gtest/gtest.h>

namespace slyver {
namespace {

constexpr const char* marker = "Unable To Divide File";
constexpr const char* unchanged = "(unchanged)";
constexpr std::uint64_t tebibyte = std::uint64_t{1} << 40U;

struct Case {
  const char* typed;
  std::uint64_t length;
  const char* other;
  bool askForWholeNumber = false;
};

void Expect(const FieldChange& change, const Case& c) {
  EXPECT_EQ(change.other.value_or(unchanged), c.other) << c.typed << " of " << c.length;
  EXPECT_EQ(change.askForWholeNumber, c.askForWholeNumber) << c.typed;
}

TEST(SizeArithmetic, DividesTheLengthBySizeOrCountRoundedUp) {
  for (const Case& c :
       {Case{"3", 1000, "334"}, Case{"4", 1000, "250"}, Case{"999", 1000, "2"},
        Case{"1000", 1000, marker}, Case{"1001", 1000, marker}, Case{"2", 0, marker},
        Case{"3.", 1000, "334", true}, Case{"1000.", 1000, marker, true}, Case{"007", 700, "100"},
        Case{"2.5", 1000, "400"}, Case{"abc", 1000, marker}, Case{"-3", 1000, marker},
        Case{"3", tebibyte, "366503875926"},                      // ...925.33
        Case{"4", tebibyte, "274877906944"},                      //
        Case{"1000", tebibyte + 1, "1099511628"},                 // 1099511627.777
        Case{"9007199254740993", 9007199254740993 * 2, "2"},      // exact beyond doubles
        Case{"9007199254740993", 9007199254740993 * 2 + 1, "3"},  //
        Case{"99999999999999999999", 18446744073709551615U, marker}}) {
    Expect(SizeFromCount(c.typed, "", c.length), c);
    Expect(CountFromSize(c.typed, c.length), c);
  }
}

TEST(SizeArithmetic, TreatsOneNoneAndTheMarkerApart) {
  Expect(SizeFromCount("1", "", 1000), {"1", 1000, marker});
  Expect(SizeFromCount("1", marker, 1000), {"1", 1000, marker});
  Expect(SizeFromCount("3", marker, 1000), {"3", 1000, unchanged});
  Expect(SizeFromCount("", marker, 1000), {"", 1000, ""});
  Expect(SizeFromCount("0", "334", 1000), {"0", 1000, ""});
  EXPECT_FALSE(SizeFromCount("0", "334", 1000).clearTyped);

  Expect(CountFromSize("1", 1000), {"1", 1000, unchanged});
  Expect(CountFromSize(marker, 1000), {marker, 1000, unchanged});
  for (const char* none : {"", "0"}) {
    Expect(CountFromSize(none, 1000), {none, 1000, ""});
    EXPECT_TRUE(CountFromSize(none, 1000).clearTyped);
  }
}

TEST(SizeArithmetic, RoundsAPieceSizeToWholeBytes) {
  struct Size {
    const char* text;
    std::optional<std::uint64_t> bytes;
  };
  for (const Size& s :
       {Size{"1450000", 1450000}, Size{"334.", 334}, Size{"0", 0}, Size{"2.4", 2}, Size{"2.5", 2},
        Size{"3.5", 4}, Size{"1e3", 1000}, Size{"9007199254740993", 9007199254740993},
        Size{"18446744073709551615", 18446744073709551615U}, Size{"18446744073709551616", {}},
        Size{"1e300", {}}, Size{"nan", {}}, Size{"-1", {}}, Size{"abc", {}}, Size{"12x", {}},
        Size{"", {}}, Size{".", {}}, Size{marker, {}}})
    EXPECT_EQ(WholeBytes(s.text), s.bytes) << s.text;
}

}  // namespace
}  // namespace slyver
