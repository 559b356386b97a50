#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/settings/INIReadWri.h"

namespace slyver {

/// A carrier is a main file that carries hidden files: the main file's own bytes, then the hidden
/// files' bytes in the order in which they were hidden, then a directory of 2500 bytes. The
/// directory is an ini text padded with zero bytes, whose values are enciphered (Crypt.h); it is
/// found by its place alone.
///
/// Here all text is 8-bit text, but for the names of HiddenFile.

/// The length of the directory in bytes.
inline constexpr std::uint64_t directoryLength = 2500;

/// A carrier takes no more hidden files than this.
inline constexpr int maxHiddenFiles = 6;

/// A name, and so a password, of more characters does not survive being read back.
inline constexpr std::size_t maxNameLength = 24;

/// The password of a list that anyone may read, as a carrier's is whose hidden file is a secret by
/// itself: who reads a directory finds its password, so a passphrase must not be one.
inline constexpr std::string_view openPassword = "slyver";

/// What the name of a hidden file ends in that is encrypted.
inline constexpr std::string_view encryptedEnding = ".age";

inline constexpr std::string_view mainSection = "s@4)";
inline constexpr std::string_view nameKey = "&hed#";
inline constexpr std::string_view lengthKey = "?Kj*^";
inline constexpr std::string_view checkKey = "!`<jhbddfu";

/// The section of the record of hidden file `index` (from 0).
std::string RecordSection(int index);

/// What a directory keeps of a file: deciphered, not examined.
struct Record {
  std::string name;
  std::string length;  ///< Decimal digits, if the password is right and the directory sound.
};

/// A hidden file: its name as UTF-8, and where its bytes lie in the carrier.
struct HiddenFile {
  std::string name;
  std::uint64_t offset = 0;  ///< In bytes, from 0.
  std::uint64_t length = 0;  ///< In bytes, at least 1.
};

/// The directory of a carrier, and what can be asked of it. It comes from outside, so nothing in it
/// is believed.
class Directory {
 public:
  explicit Directory(std::string_view text) : ini_(text) {}

  /// The directory in the ini file `file`. Throws FileError when it cannot be read: values that are
  /// merely missing would make it another directory.
  static Directory InFile(const std::filesystem::path& file);

  /// The directory at the end of a carrier: its last 2500 bytes. Throws FileError when the file
  /// cannot be read or is not longer than that.
  static Directory OfCarrier(const std::filesystem::path& carrier);

  /// A value as it stands, cut as ReadIniValue cuts it; empty when it is missing.
  std::string Value(std::string_view section, std::string_view key) const;

  /// The number of hidden files: the first index whose record has no value `key`. Hiding goes by
  /// the lengths, recovering by the names; in what this program has written both give the same. 0
  /// for a file that no hide has made.
  int Count(std::string_view key) const;

  /// Whether the values of the main file and of record `index` are all there.
  bool IsComplete(int index) const;

  /// Whether a password, which is not empty, is the directory's: its check value, deciphered with
  /// the password, is the password itself.
  bool IsPassword(std::string_view password) const;

  /// The records, counted by their names.
  std::vector<Record> Records(std::string_view password) const;

  /// The main file's own length in bytes. Nothing unless it is decimal, positive and leaves room
  /// for the directory in a carrier of `carrierLength` bytes.
  std::optional<std::uint64_t> MainLength(std::string_view password,
                                          std::uint64_t carrierLength) const;

  /// Where the hidden files lie. Nothing unless every length is decimal and positive, all of them
  /// fit before the directory of a carrier of `carrierLength` bytes, and every name is a bare file
  /// name.
  std::optional<std::vector<HiddenFile>> Files(std::string_view password,
                                               std::uint64_t carrierLength) const;

  /// Whether the `records` hidden files and the main file can all be recovered and are all that a
  /// carrier of `carrierLength` bytes holds before its directory. Only then will a file that is put
  /// behind them be found again.
  bool FillsCarrier(std::string_view password, int records, std::uint64_t carrierLength) const;

 private:
  IniText ini_;
};

/// Whether a file of this name can be made in a folder and nowhere else once "Original " stands
/// before it: not empty, no separators, drive or control characters, neither "." nor "..".
bool IsBareFileName(std::string_view name);

/// Whether the list of what `carrier` hides opens with openPassword. False also where nothing is
/// hidden in it or that cannot be told.
bool ListIsOpen(const std::filesystem::path& carrier);

/// A file's name (UTF-8) as a directory keeps it: 8-bit text of at most `most` characters, the
/// first ones and the extension. "_" stands for each character that the code page lacks or that no
/// bare file name has.
std::string StoredName(std::string_view name, std::size_t most = maxNameLength);

/// The text of the directory of a first hide: the main file, then record 0, all enciphered with
/// `password`. Lengths are in bytes.
std::string FirstDirectory(const Record& main, const Record& hidden, std::string_view password);

/// The text of the directory of an addition: the values of the main file and of records 0 to
/// index - 1 as they are read from `old`, then record `index`, enciphered with `password`.
std::string AddedDirectory(const Directory& old, int index, const Record& hidden,
                           std::string_view password);

/// Fills a directory text to 2500 bytes with zero bytes. The first of them takes the place of the
/// text's last byte, the line feed, which no reader misses. A text of 2500 bytes or more stays as
/// it is.
std::string Padded(std::string directory);

}  // namespace slyver
