#pragma once

#include <string>
#include <string_view>

namespace slyver {

/// The password cipher of a carrier's directory: a repeating-key exclusive-or, written in
/// hexadecimal so that it can stand as a value of an ini file. The key is the text made of the
/// password's character codes in decimal, one behind the other ("Ab" gives "6598"). It keeps a
/// curious eye off names and lengths; it is no protection against anyone who means to read them.
///
/// All text is 8-bit text.

/// Enciphers `text` under `password`: two upper-case hexadecimal digits for each character. Throws
/// std::invalid_argument when the password is empty and there is something to encipher.
std::string EncryptText(std::string_view text, std::string_view password);

/// Deciphers what EncryptText returned: half as many characters, rounded up. A pair is read as far
/// as it is hexadecimal, so that damaged text gives other text and never a failure; a lone last
/// digit counts as a pair. Throws std::invalid_argument when the password is empty and there is
/// something to decipher.
std::string DecryptText(std::string_view cipherText, std::string_view password);

}  // namespace slyver
