#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "engine/bytes/RangeCipher.h"
#include "fuzz/Require.h"

namespace slyver {

/// An age file that was published with the format: the plain bytes are "age".
inline constexpr const char* sampleAgePassphrase = "password";
inline const std::string sampleAge =
    "age-encryption.org/v1\n"
    "-> scrypt rF0/NwblUHHTpgQgRpe5CQ 10\n"
    "gUjEymFKMVXQEKdMMHL24oYexjE3TIC0O0zGSqJ2aUY\n"
    "--- IOXiQYStkoT1mvZW2tFOqZdhRVvj58egABx/sWfZQbc\n"
    "\x1B\x35\xC6\xE6\x87\xDD" +
    std::string(1, '\0') +
    "\xDA:\xC3y\xAC\x9Ft,!\xFD\x18Z\x1B\x9E=\xEDs\x9D\x14\xACj\x9AP\x12M\xB8"
    "f\xD8";

/// What a cipher makes of all its chunks.
inline std::string Converted(const RangeCipher& cipher, std::string_view bytes) {
  std::string all;
  std::string chunk(70000, '\0');
  for (std::size_t at = 0, number = 0; at < bytes.size(); ++number) {
    const std::string_view part = bytes.substr(at, cipher.SourceChunk());
    chunk.replace(0, part.size(), part);
    at += part.size();
    all += chunk.substr(0, cipher.Convert(number, at == bytes.size(), chunk, part.size()));
  }
  Require(all.size() == cipher.TargetLength(bytes.size()));
  return all;
}

}  // namespace slyver
