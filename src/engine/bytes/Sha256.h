#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

struct gcry_md_handle;

namespace slyver {

/// The SHA-256 digest of some bytes.
using Digest = std::array<std::uint8_t, 32>;

/// Computes a digest of bytes as they come by.
class Sha256 {
 public:
  /// Throws Error where the library has no SHA-256 or there is no memory.
  Sha256();

  /// Takes in the next bytes.
  void Add(std::span<const char> bytes);

  /// Takes in `count` zero bytes.
  void AddZeros(std::uint64_t count);

  /// The digest of all that was taken in since the start, or since the last call of this.
  Digest Finish();

 private:
  struct Close {
    void operator()(gcry_md_handle* handle) const;
  };
  std::unique_ptr<gcry_md_handle, Close> handle_;
};

}  // namespace slyver
