#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace slyver {

/// Encrypts or decrypts independent chunks of a range, in any order, from any thread. Only the last
/// chunk may be shorter.
class RangeCipher {
 public:
  RangeCipher() = default;
  virtual ~RangeCipher() = default;
  RangeCipher(const RangeCipher&) = delete;
  RangeCipher& operator=(const RangeCipher&) = delete;

  /// Returns the length of a whole chunk in bytes, in the source and in the target. The last
  /// chunk's lengths differ by as much. At most 128 KiB, the copy's buffer.
  virtual std::size_t SourceChunk() const = 0;
  virtual std::size_t TargetChunk() const = 0;

  /// Converts chunk `number` (from 0), the first `size` bytes of `buffer`, which has room for
  /// either length. Returns the new length in bytes. Throws std::exception on an error.
  virtual std::size_t Convert(std::uint64_t number, bool isLast, std::span<char> buffer,
                              std::size_t size) const = 0;

  /// Returns the length of `sourceLength` converted bytes, in bytes; 0 for 0.
  std::uint64_t TargetLength(std::uint64_t sourceLength) const {
    const std::uint64_t chunks = (sourceLength + SourceChunk() - 1) / SourceChunk();
    return sourceLength + chunks * TargetChunk() - chunks * SourceChunk();
  }
};

}  // namespace slyver
