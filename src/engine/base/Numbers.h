#pragma once

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace slyver {

/// The highest number of pieces, ranges and numbered names.
inline constexpr int maxCount = std::numeric_limits<std::int16_t>::max();

/// Returns the decimal number that is all of `text`; `nullopt` if it is none or does not fit.
template <typename Number>
std::optional<Number> NumberIn(std::string_view text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return number;
}

/// Returns the value of a hexadecimal digit of either case, or -1.
constexpr int HexValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  return -1;
}

/// The digits for AppendHex().
inline constexpr std::string_view lowerHex = "0123456789abcdef";
inline constexpr std::string_view upperHex = "0123456789ABCDEF";

/// Appends a byte to `text` as two hexadecimal digits.
inline void AppendHex(std::string& text, std::uint8_t byte, std::string_view digits) {
  text += digits[byte >> 4U];
  text += digits[byte & 15U];
}

}  // namespace slyver
