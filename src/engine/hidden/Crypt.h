#pragma once

#include <string>
#include <string_view>

namespace slyver {

// The password cipher of a carrier's directory: repeating-key exclusive-or, in hexadecimal. The key
// is the password's character codes in decimal, concatenated ("Ab" gives "6598"). It hides names
// and lengths at a glance, but does not protect them. All text is 8-bit text.

/// Enciphers `text` under `password` as two upper-case hexadecimal digits for each character.
/// Throws std::invalid_argument if the password is empty and `text` is not.
std::string EncryptText(std::string_view text, std::string_view password);

/// Deciphers what EncryptText() returned: half as many characters, rounded up. Each pair is read up
/// to its first character that is not hexadecimal, so that damaged text does not fail. Throws
/// std::invalid_argument if the password is empty and `cipherText` is not.
std::string DecryptText(std::string_view cipherText, std::string_view password);

}  // namespace slyver
