#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/settings/INIReadWri.h"

namespace slyver {

// A carrier is a main file with hidden files: the main file's bytes, the hidden files' bytes in the
// order of hiding, and a directory in the last 2500 bytes. The directory is an ini text with
// enciphered values (Crypt.h), padded with zero bytes.
//
// All text is 8-bit text, except HiddenFile::name.

/// The length of the directory in bytes.
inline constexpr std::uint64_t directoryLength = 2500;

/// The most hidden files of a carrier.
inline constexpr int maxHiddenFiles = 6;

/// The most characters of a name or a password: iniReadLimit cuts off longer ones.
inline constexpr std::size_t maxNameLength = 24;

/// The password of a list that anyone may read, for carriers of encrypted files. A directory gives
/// its password away, so a passphrase must not be one.
inline constexpr std::string_view openPassword = "slyver";

/// The extension of encrypted hidden files.
inline constexpr std::string_view encryptedEnding = ".age";

inline constexpr std::string_view mainSection = "s@4)";
inline constexpr std::string_view nameKey = "&hed#";
inline constexpr std::string_view lengthKey = "?Kj*^";
inline constexpr std::string_view checkKey = "!`<jhbddfu";

/// Returns the section of the record of hidden file `index` (from 0).
std::string RecordSection(int index);

/// A directory's record of a file: deciphered, not validated.
struct Record {
  std::string name;
  std::string length;  ///< Decimal digits, if the password is right and the directory undamaged.
};

/// A hidden file in a carrier.
struct HiddenFile {
  std::string name;          ///< UTF-8.
  std::uint64_t offset = 0;  ///< In bytes, from 0.
  std::uint64_t length = 0;  ///< In bytes, at least 1.
};

/// The untrusted directory of a carrier.
class Directory {
 public:
  explicit Directory(std::string_view text) : ini_(text) {}

  /// Reads the directory in the ini file `file`. Throws FileError.
  static Directory InFile(const std::filesystem::path& file);

  /// Reads the directory at the end of a carrier. Throws FileError, also if the file is not longer
  /// than a directory.
  static Directory OfCarrier(const std::filesystem::path& carrier);

  /// Returns a value, cut as ReadIniValue() does; empty if missing.
  std::string Value(std::string_view section, std::string_view key) const;

  /// Returns the number of hidden files: the first index whose record has no value `key`. Hiding
  /// counts lengths, recovering names; both are equal in a directory of this program. 0 for a file
  /// that is no carrier.
  int Count(std::string_view key) const;

  /// True if all values of the main file and of record `index` exist.
  bool IsComplete(int index) const;

  /// True if `password`, which must not be empty, is the directory's: it deciphers the check value
  /// to itself.
  bool IsPassword(std::string_view password) const;

  /// Returns the records, counted by their names.
  std::vector<Record> Records(std::string_view password) const;

  /// Returns the main file's length in bytes; `nullopt` unless it is decimal, positive and leaves
  /// room for the directory in a carrier of `carrierLength` bytes.
  std::optional<std::uint64_t> MainLength(std::string_view password,
                                          std::uint64_t carrierLength) const;

  /// Returns the hidden files; `nullopt` unless every length is decimal and positive, all fit
  /// before the directory of a carrier of `carrierLength` bytes, and every name is a bare file
  /// name.
  std::optional<std::vector<HiddenFile>> Files(std::string_view password,
                                               std::uint64_t carrierLength) const;

  /// True if the main file and the `records` hidden files exactly fill a carrier of `carrierLength`
  /// bytes up to its directory. Only then can a file added after them be recovered.
  bool FillsCarrier(std::string_view password, int records, std::uint64_t carrierLength) const;

 private:
  IniText ini_;
};

/// True if a file of this name cannot leave its folder: not empty, no separator, drive or control
/// character, not "." or "..".
bool IsBareFileName(std::string_view name);

/// True if the list of `carrier` opens with openPassword; false if nothing is hidden in it, or on
/// an error.
bool ListIsOpen(const std::filesystem::path& carrier);

/// Converts a file's name (UTF-8) to 8-bit text of at most `most` characters: the first ones and
/// the extension. "_" replaces characters that the code page lacks or that no bare file name has.
std::string StoredName(std::string_view name, std::size_t most = maxNameLength);

/// Returns the directory text of a first hide: the main file and record 0, enciphered with
/// `password`. Lengths are in bytes.
std::string FirstDirectory(const Record& main, const Record& hidden, std::string_view password);

/// Returns the directory text of an addition: the values of the main file and of records 0 to
/// index - 1 from `old`, and record `index`, enciphered with `password`.
std::string AddedDirectory(const Directory& old, int index, const Record& hidden,
                           std::string_view password);

/// Pads a directory text to 2500 bytes with zero bytes; a longer one is unchanged. The first zero
/// byte replaces the final line feed, which no reader needs.
std::string Padded(std::string directory);

}  // namespace slyver
