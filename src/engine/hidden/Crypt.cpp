#include "engine/hidden/Crypt.h"

#include <cstdint>
#include <stdexcept>

namespace slyver {

namespace {

/// Hands out the key's bytes, again and again from the first.
class KeyStream {
 public:
  explicit KeyStream(std::string_view password) {
    for (const char c : password) key_ += std::to_string(static_cast<std::uint8_t>(c));
  }

  std::uint8_t Next() {
    if (key_.empty()) throw std::invalid_argument("Invalid procedure call or argument");
    const auto byte = static_cast<std::uint8_t>(key_[next_]);
    next_ = (next_ + 1) % key_.size();
    return byte;
  }

 private:
  std::string key_;
  std::size_t next_ = 0;
};

/// The value of a hexadecimal digit, or -1.
int DigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  return -1;
}

/// The number that the text begins with, 0 when it begins with none.
unsigned LeadingHexadecimal(std::string_view text) {
  unsigned value = 0;
  for (const char c : text) {
    const int digit = DigitValue(c);
    if (digit < 0) break;
    value = value * 16 + static_cast<unsigned>(digit);
  }
  return value;
}

}  // namespace

std::string EncryptText(std::string_view text, std::string_view password) {
  static constexpr std::string_view digits = "0123456789ABCDEF";
  KeyStream key(password);
  std::string result;
  for (const char c : text) {
    const unsigned code = static_cast<std::uint8_t>(c) ^ unsigned { key.Next() };
    result += digits[code / 16];
    result += digits[code % 16];
  }
  return result;
}

std::string DecryptText(std::string_view cipherText, std::string_view password) {
  KeyStream key(password);
  std::string result;
  for (std::size_t i = 0; i < cipherText.size(); i += 2)
    result += static_cast<char>(LeadingHexadecimal(cipherText.substr(i, 2)) ^ key.Next());
  return result;
}

}  // namespace slyver
