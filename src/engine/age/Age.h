#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/bytes/RangeCipher.h"

namespace slyver {

/// The age file format, version 1 (age-encryption.org/v1), with a passphrase. A file is a header in
/// text, which wraps the file's key, then 16 random bytes, then the plain bytes in chunks of 64
/// KiB, each enciphered and authenticated by itself and by its place.
///
/// A passphrase is a text of any bytes but none. Turning one into a key is made costly on purpose:
/// with the usual work factor, 18, it takes about a second and 256 MiB of memory, and each one more
/// doubles both.

/// What every age file of this version begins with.
inline constexpr std::string_view ageBeginning = "age-encryption.org/v1\n";

inline constexpr int ageWorkFactor = 18;
/// Files of a higher one are refused: whoever sends them decides what they cost.
inline constexpr int ageMostWork = 20;

/// As many of a file's first bytes hold every header that is read.
inline constexpr std::size_t ageHeaderRoom = 65536;

/// The beginning of a new age file and what makes the rest of it.
struct NewAgeFile {
  std::string beginning;  ///< The header and the random bytes.
  std::shared_ptr<const RangeCipher> cipher;
};

/// Begins an age file with a new key under `passphrase`. Costs what `workFactor` says. Throws
/// Error where memory or random numbers are not to be had.
NewAgeFile BeginAgeFile(std::string_view passphrase, int workFactor = ageWorkFactor);

/// The header of an age file that a passphrase opens, as it was read: nothing in it is believed.
struct AgeHeader {
  std::string name;        ///< What the file is called in messages.
  std::string text;        ///< What the header's own authentication is about.
  std::string salt;        ///< 16 bytes.
  int workFactor = 0;      ///< 1 to ageMostWork.
  std::string wrappedKey;  ///< 32 bytes.
  std::string mac;         ///< 32 bytes.
  std::string nonce;       ///< 16 bytes.
  std::size_t length = 0;  ///< Of all that comes before the chunks, in bytes.
};

/// Reads the header of a file of `length` bytes that begins with `beginning`: all of it, or
/// ageHeaderRoom of its bytes. Nothing where the file is for the holders of keys, whom this program
/// does not know. Throws Error that says why to the user: "NAME Is Damaged.", or that
/// it asks for too much work.
std::optional<AgeHeader> ReadAgeHeader(std::string_view beginning, std::uint64_t length,
                                       std::string_view name);

/// What deciphers the chunks behind the header; null when the passphrase is wrong. Costs what the
/// header's work factor says. Throws Error as ReadAgeHeader() and BeginAgeFile() do.
/// A chunk that is not authentic is refused with "NAME Is Damaged."
std::shared_ptr<const RangeCipher> UnlockAge(const AgeHeader& header, std::string_view passphrase);

}  // namespace slyver
