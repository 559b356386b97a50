#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

struct gcry_md_handle;

namespace slyver {

/// The SHA-256 digest of some bytes.
using Digest = std::array<std::uint8_t, 32>;

/// Computes digests.
class Sha256 {
 public:
  /// Throws Error if the library has no SHA-256 or there is no memory.
  Sha256();

  /// Adds the next bytes.
  void Add(std::span<const char> bytes);

  /// Adds `count` zero bytes.
  void AddZeros(std::uint64_t count);

  /// Returns the digest of all bytes added since the last call.
  Digest Finish();

 private:
  struct Close {
    void operator()(gcry_md_handle* handle) const;
  };
  std::unique_ptr<gcry_md_handle, Close> handle_;
};

}  // namespace slyver
