#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/bytes/RangeCipher.h"

namespace slyver {

// The age file format, version 1 (age-encryption.org/v1), with a passphrase. A file is a text
// header with the wrapped file key, 16 random bytes, and the plaintext in chunks of 64 KiB. Each
// chunk is encrypted and authenticated with its number.
//
// A passphrase is any text but an empty one. Deriving its key is slow on purpose: work factor 18
// takes about a second and 256 MiB of memory, and each step doubles both.

/// The first bytes of every age file of this version.
inline constexpr std::string_view ageBeginning = "age-encryption.org/v1\n";

/// The work factor of new files.
inline constexpr int ageWorkFactor = 18;
/// The highest work factor that is opened. A file's sender chooses its cost.
inline constexpr int ageMostWork = 20;

/// The most bytes of a header that is read.
inline constexpr std::size_t ageHeaderRoom = 65536;

/// A new age file.
struct NewAgeFile {
  std::string beginning;                      ///< The header and the random bytes.
  std::shared_ptr<const RangeCipher> cipher;  ///< Encrypts the rest.
};

/// Creates an age file's beginning with a new key under `passphrase`, at the cost of `workFactor`.
/// Throws Error without enough memory or random numbers.
NewAgeFile BeginAgeFile(std::string_view passphrase, int workFactor = ageWorkFactor);

/// The untrusted header of an age file with a passphrase.
struct AgeHeader {
  std::string name;        ///< The file's name in messages.
  std::string text;        ///< The text that `mac` authenticates.
  std::string salt;        ///< 16 bytes.
  int workFactor = 0;      ///< 1 to ageMostWork.
  std::string wrappedKey;  ///< 32 bytes.
  std::string mac;         ///< 32 bytes.
  std::string nonce;       ///< 16 bytes.
  std::size_t length = 0;  ///< The bytes before the chunks.
};

/// Reads the header of a file of `length` bytes from its first ageHeaderRoom bytes or fewer.
/// `nullopt` if the file is encrypted to keys. Throws Error: "NAME Is Damaged." or "NAME Needs Too
/// Much Memory (Work Factor 21; Limit 20)."
std::optional<AgeHeader> ReadAgeHeader(std::string_view beginning, std::uint64_t length,
                                       std::string_view name);

/// Returns the cipher that decrypts the chunks after the header; null if the passphrase is wrong.
/// Costs what the header's work factor says. Throws Error as ReadAgeHeader() and BeginAgeFile() do.
/// The cipher throws "NAME Is Damaged." for a chunk that is not authentic.
std::shared_ptr<const RangeCipher> UnlockAge(const AgeHeader& header, std::string_view passphrase);

}  // namespace slyver
