#include "engine/base/Text8.h"

#include <gtest/gtest.h>

namespace slyver {
namespace {

TEST(Text8, IsWindows1252) {
  for (const auto& [utf8, text8] : {std::pair{"\u00E9\u00DF\u00A0\u00FF~", "\xE9\xDF\xA0\xFF~"},
                                    {"\u20AC\u0152\u201C\u201D", "\x80\x8C\x93\x94"},
                                    {"\u2122\u0178\u0081\u009D", "\x99\x9F\x81\x9D"}}) {
    EXPECT_EQ(ToText8(utf8), text8);
    EXPECT_EQ(FromText8(text8), utf8);
  }
}

TEST(Text8, RefusesOrSubstitutesWhatTheCodePageLacks) {
  for (const auto& [utf8, lossy] : {
           std::pair{"\u0416.txt", "_.txt"},  // a letter of another script
           {"a\U0001F600b", "a_b"},           // four bytes, one character
           {"\u0080\u0095", "__"},            // control characters whose codes are taken
           {"\x80\xFF", "__"},                // bytes that begin nothing
           {"\xE2\x82", "__"},                // cut off
           {"\xC3(", "_("},                   // not continued
           {"\xC1\xBF", "__"},                // longer than need be
           {"\xE0\x80\xAF", "___"},           // longer than need be
           {"\xED\xA0\x80", "___"},           // half a surrogate pair
           {"\xF4\x90\x80\x80", "____"},      // beyond the last character
           // The first and the last of each length.
           {"\u0800\uD7FF\uE000\U00010000\U0010FFFF", "_____"},
       }) {
    EXPECT_EQ(ToText8(utf8), std::nullopt) << lossy;
    EXPECT_EQ(ToText8Lossy(utf8), lossy);
  }
}

}  // namespace
}  // namespace slyver
