#include "engine/hidden/Crypt.h"

#include <cstdint>
#include <stdexcept>

#include "engine/base/Numbers.h"

namespace slyver {

namespace {

/// Returns the key's bytes over and over.
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

/// Returns the number that the text begins with, or 0.
unsigned LeadingHexadecimal(std::string_view text) {
  unsigned value = 0;
  for (const char c : text) {
    const int digit = HexValue(c);
    if (digit < 0) break;
    value = value * 16 + static_cast<unsigned>(digit);
  }
  return value;
}

}  // namespace

std::string EncryptText(std::string_view text, std::string_view password) {
  KeyStream key(password);
  std::string result;
  for (const char c : text)
    AppendHex(result, static_cast<std::uint8_t>(static_cast<std::uint8_t>(c) ^ key.Next()),
              upperHex);
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
