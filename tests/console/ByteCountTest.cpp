#include "console/ByteCount.h"

#include <gtest/gtest.h>

#include <sstream>

#include "engine/talk/ProgressText.h"

namespace slyver {
namespace {

TEST(ByteCount, ReadsNumbersAndUnitsExactly) {
  struct Case {
    const char* text;
    std::uint64_t bytes;
  };
  for (const Case& c :
       {Case{"1450000", 1450000}, Case{"1450000B", 1450000}, Case{"2kB", 2000},
        Case{"1.44 MB", 1440000}, Case{"64KiB", 65536}, Case{"64 kib", 65536}, Case{"64K", 65536},
        Case{"1m", 1048576}, Case{"2GB", 2000000000}, Case{"0.5 GiB", 536870912},
        Case{"3T", 3298534883328}, Case{"3TB", 3000000000000}, Case{"1E", 1152921504606846976},
        Case{"1.000", 1}, Case{"18446744073709551615", 18446744073709551615U}})
    EXPECT_EQ(ParseByteCount(c.text).value_or(0), c.bytes) << c.text;
  std::istringstream wrong(
      "|MB|0|0.0MB|-1|+1| 1|2.2GiB|1.5|1.0005kB|1..5kB|.|1e3|0x10|1,5MB|1 MB 2|1KK|1Z|16E|"
      "18446744073709551616|18446744073709551.616kB|20000000000 GB");
  for (std::string text; std::getline(wrong, text, '|');)
    EXPECT_EQ(ParseByteCount(text), std::nullopt) << text;
}

TEST(ReadableBytes, GivesThreeDigitsAndAUnit) {
  struct Case {
    double bytes;
    const char* text;
  };
  for (const Case& c :
       {Case{0, "0 bytes"}, Case{999, "999 bytes"}, Case{1000, "1.00 kB"}, Case{1450000, "1.45 MB"},
        Case{9994, "9.99 kB"}, Case{9996, "10.0 kB"}, Case{99960, "100 kB"}, Case{123456, "123 kB"},
        Case{999499, "999 kB"}, Case{999501, "1.00 MB"}, Case{2.2e12, "2.20 TB"},
        Case{1.8e19, "18.0 EB"}, Case{5e21, "5000 EB"}})
    EXPECT_EQ(ReadableBytes(c.bytes), c.text);
}

}  // namespace
}  // namespace slyver
