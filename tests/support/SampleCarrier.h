#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "support/TempFolder.h"

namespace slyver {

/// Carriers by the description of the format, so that writer and reader are each held against it
/// and not against one another. The main file is "m.png". The password is "Ab": the key is "6598",
/// the check value 'A' xor '6' and 'b' xor '5'.
inline constexpr const char* samplePassword = "Ab";

struct SampleFile {
  const char* name;
  std::size_t length;
};

/// Files to hide, in the order of their records.
inline constexpr std::array<SampleFile, 6> sampleFiles = {
    {{"a.bin", 7}, {"b.bin", 3000}, {"c.bin", 1}, {"d.bin", 25}, {"e.bin", 5000}, {"f.bin", 6}}};

/// The bytes of sample file `i`.
inline std::string SampleBytes(std::size_t i) {
  return SomeBytes(6000).substr(100 * i, sampleFiles.at(i).length);
}

/// A value of a directory, enciphered under the sample password.
inline std::string Enciphered(std::string_view plain) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string value;
  for (std::size_t i = 0; i < plain.size(); ++i) {
    const unsigned code = static_cast<unsigned char>(plain[i] ^ "6598"[i % 4]);
    value += {digits[code / 16], digits[code % 16]};
  }
  return value;
}

/// The record of hidden file `i`; `name` is 8-bit text.
inline std::string SampleRecord(std::size_t i, std::string_view name, std::string_view length) {
  return "[" + std::to_string(i) + "dfg%]\r\n&hed#=" + Enciphered(name) +
         "\r\n?Kj*^=" + Enciphered(length) + "\r\n";
}

/// A directory of 2500 bytes with these records behind the main file's.
inline std::string SampleDirectory(std::size_t mainLength, std::string_view records) {
  std::string text =
      "[s@4)]\r\n&hed#=5B1B495651\r\n?Kj*^=" + Enciphered(std::to_string(mainLength)) +
      "\r\n!`<jhbddfu=7757\r\n" + std::string(records);
  text.back() = '\0';
  text.resize(2500, '\0');
  return text;
}

/// A carrier with the first `count` sample files.
inline std::string SampleCarrier(std::size_t mainLength, std::size_t count) {
  std::string bytes = SomeBytes(mainLength);
  std::string records;
  for (std::size_t i = 0; i < count; ++i) {
    bytes += SampleBytes(i);
    records += SampleRecord(i, sampleFiles.at(i).name, std::to_string(sampleFiles.at(i).length));
  }
  return bytes + SampleDirectory(mainLength, records);
}

}  // namespace slyver
