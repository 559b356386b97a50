#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/bytes/Source.h"

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

/// Returns the age file of `plain` with a new key under `passphrase`, at the cost of `workFactor`.
/// It can be cut between chunks; one that two readers make twice must not change in between, or one
/// nonce would cover two texts. Throws Error without enough memory or random numbers.
std::shared_ptr<const Source> EncryptedWithAge(std::shared_ptr<const Source> plain,
                                               std::string_view passphrase,
                                               int workFactor = ageWorkFactor);

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

/// Returns the plaintext of an age file in `source`, whose chunks are `length` bytes from `offset`
/// on; null if the passphrase is wrong. Takes as long and as much memory as EncryptedWithAge()
/// does. Throws "NAME Is Damaged.", as its readers do for a chunk that is not authentic.
std::shared_ptr<const Source> DecryptedWithAge(std::shared_ptr<const Source> source,
                                               std::uint64_t offset, std::uint64_t length,
                                               const AgeHeader& header,
                                               std::string_view passphrase);

}  // namespace slyver
