#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/system/Files.h"

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

inline constexpr std::string_view mainSection = "s@4)";
inline constexpr std::string_view nameKey = "&hed#";
inline constexpr std::string_view lengthKey = "?Kj*^";
inline constexpr std::string_view checkKey = "!`<jhbddfu";

/// The section of the record of hidden file `index` (from 0).
std::string RecordSection(int index);

/// Reads a value of a directory as ReadIniValue does: empty when it is missing.
using ValueReader = std::function<std::string(std::string_view section, std::string_view key)>;

/// Reads from the directory in the ini file `file`, which is read here and now. Throws FileError
/// when it cannot be: values that are merely missing would make it another directory.
ValueReader DirectoryFile(const std::filesystem::path& file);

/// Reads from the directory `text`.
ValueReader DirectoryText(std::string text);

/// The last 2500 bytes of the file. Throws FileError when it cannot be read or is not longer than
/// that.
std::string ReadDirectoryText(const std::filesystem::path& carrier);

/// The number of hidden files by the rule of hiding: the first index without a length. 0 for a
/// file that no hide has made.
int CountRecords(const ValueReader& directory);

/// Whether a password is the directory's: its check value, deciphered with the password, is the
/// password itself. `password` is not empty.
bool IsPasswordOf(const ValueReader& directory, std::string_view password);

/// A record as it is read: deciphered, not examined.
struct Record {
  std::string name;
  std::string length;  ///< Decimal digits, if the password is right and the directory sound.
};

/// The records up to the first index without a name, deciphered with `password`.
std::vector<Record> ReadRecords(const ValueReader& directory, std::string_view password);

/// The main file's own length as the directory has it, deciphered with `password`.
std::string ReadMainLength(const ValueReader& directory, std::string_view password);

/// A hidden file: its name as UTF-8, and where its bytes lie in the carrier.
struct HiddenFile {
  std::string name;
  std::uint64_t offset = 0;  ///< In bytes, from 0.
  std::uint64_t length = 0;  ///< In bytes, at least 1.
};

/// A main length from a directory, in bytes. Nothing unless it is decimal, positive and leaves room
/// for the directory in a carrier of `carrierLength` bytes.
std::optional<std::uint64_t> MainLengthIn(std::string_view mainLength, std::uint64_t carrierLength);

/// Where the hidden files lie. A directory comes from outside, so nothing is believed: the result
/// is nothing unless every length is decimal and positive, all of them fit before the directory of
/// a carrier of `carrierLength` bytes, and every name is a bare file name.
std::optional<std::vector<HiddenFile>> LayOut(std::string_view mainLength,
                                              const std::vector<Record>& records,
                                              std::uint64_t carrierLength);

/// Whether the `records` hidden files of a directory and the main file can all be recovered and are
/// all that a carrier of `carrierLength` bytes holds before its directory. Only then will a file
/// that is put behind them be found again.
bool PartsFillCarrier(const ValueReader& directory, std::string_view password, int records,
                      std::uint64_t carrierLength);

/// Whether a file of this name can be made in a folder and nowhere else, on every system: not
/// empty, no separators, drive or control characters, neither "." nor "..", nor a device of
/// Windows.
bool IsBareFileName(std::string_view name);

/// The text of the directory of a first hide: the main file, then record 0, all enciphered with
/// `password`. Lengths are in bytes.
std::string FirstDirectory(const Record& main, const Record& hidden, std::string_view password);

/// The text of the directory of an addition: the values of the main file and of records 0 to
/// index - 1 as they are read from `old`, then record `index`, enciphered with `password`.
std::string AddedDirectory(const ValueReader& old, int index, const Record& hidden,
                           std::string_view password);

/// Fills a directory text to 2500 bytes with zero bytes. The first of them takes the place of the
/// text's last byte, the line feed, which no reader misses. A text of 2500 bytes or more stays as
/// it is.
std::string Padded(std::string directory);

}  // namespace slyver
