#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "support/TempFolder.h"

namespace slyver {

/// Carriers worked out by hand, so that writer and reader are each held against the format and not
/// against one another. The password is "Ab": the key is "6598", the check value 'A' xor '6' and
/// 'b' xor '5'. So the digits of a length become "0" and their exclusive-or with 6, 5, 9, 8, 6 ...
inline constexpr const char* samplePassword = "Ab";

struct SampleMain {
  std::size_t length;
  std::string_view lengthValue;
};

/// Main files, all named "m.png".
inline constexpr std::array<SampleMain, 10> sampleMains = {{{1, "07"},
                                                            {100, "070509"},
                                                            {2499, "04010001"},
                                                            {2500, "04000908"},
                                                            {2501, "04000909"},
                                                            {3000, "05050908"},
                                                            {4999, "020C0001"},
                                                            {5000, "03050908"},
                                                            {5001, "03050909"},
                                                            {200000, "040509080605"}}};

struct SampleFile {
  const char* name;
  std::size_t length;
  std::string_view record;
};

/// Files to hide, in the order of their records.
inline constexpr std::array<SampleFile, 6> sampleFiles = {
    {{"a.bin", 7, "[0dfg%]\r\n&hed#=571B5B5158\r\n?Kj*^=01\r\n"},
     {"b.bin", 3000, "[1dfg%]\r\n&hed#=541B5B5158\r\n?Kj*^=05050908\r\n"},
     {"c.bin", 1, "[2dfg%]\r\n&hed#=551B5B5158\r\n?Kj*^=07\r\n"},
     {"d.bin", 25, "[3dfg%]\r\n&hed#=521B5B5158\r\n?Kj*^=0400\r\n"},
     {"e.bin", 5000, "[4dfg%]\r\n&hed#=531B5B5158\r\n?Kj*^=03050908\r\n"},
     {"f.bin", 6, "[5dfg%]\r\n&hed#=501B5B5158\r\n?Kj*^=00\r\n"}}};

/// The bytes of sample file `i`.
inline std::string SampleBytes(std::size_t i) {
  return SomeBytes(6000).substr(100 * i, sampleFiles.at(i).length);
}

/// A directory of 2500 bytes with these records behind the main file's.
inline std::string SampleDirectory(std::string_view mainLengthValue, std::string_view records) {
  std::string text = "[s@4)]\r\n&hed#=5B1B495651\r\n?Kj*^=" + std::string(mainLengthValue) +
                     "\r\n!`<jhbddfu=7757\r\n" + std::string(records);
  text.back() = '\0';
  text.resize(2500, '\0');
  return text;
}

/// A carrier with the first `count` sample files.
inline std::string SampleCarrier(const SampleMain& main, std::size_t count) {
  std::string bytes = SomeBytes(main.length);
  std::string records;
  for (std::size_t i = 0; i < count; ++i) {
    bytes += SampleBytes(i);
    records += sampleFiles.at(i).record;
  }
  return bytes + SampleDirectory(main.lengthValue, records);
}

/// A value of a directory, enciphered under the sample password.
inline std::string Enciphered(std::string_view plain) {
  std::string value;
  for (std::size_t i = 0; i < plain.size(); ++i) {
    std::array<char, 3> digits = {};
    const int code = static_cast<unsigned char>(plain[i]) ^ "6598"[i % 4];
    (void)std::snprintf(digits.data(), digits.size(), "%02X", static_cast<unsigned>(code));
    value += digits.data();
  }
  return value;
}

}  // namespace slyver
