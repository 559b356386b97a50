#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace slyver {

/// What becomes of a range's bytes on their way into a target: they are enciphered or deciphered in
/// chunks, of which only the last one may be shorter. No chunk depends on another, so any thread
/// may convert any of them, in any order.
class RangeCipher {
 public:
  RangeCipher() = default;
  virtual ~RangeCipher() = default;
  RangeCipher(const RangeCipher&) = delete;
  RangeCipher& operator=(const RangeCipher&) = delete;

  /// The lengths of a whole chunk in bytes, in the source and in the target. The last chunk's
  /// differ by as much. Neither is longer than the copy's buffer, 128 KiB.
  virtual std::size_t SourceChunk() const = 0;
  virtual std::size_t TargetChunk() const = 0;

  /// Converts the first `size` bytes of `buffer`, which has room for either length: chunk `number`
  /// (from 0) of the range, `isLast` if none follows. Returns how many bytes it has become. Throws
  /// std::exception when it cannot be converted.
  virtual std::size_t Convert(std::uint64_t number, bool isLast, std::span<char> buffer,
                              std::size_t size) const = 0;

  /// What becomes of `sourceLength` bytes, in bytes. 0 for none, since then there is no chunk.
  std::uint64_t TargetLength(std::uint64_t sourceLength) const {
    const std::uint64_t chunks = (sourceLength + SourceChunk() - 1) / SourceChunk();
    return sourceLength + chunks * TargetChunk() - chunks * SourceChunk();
  }
};

}  // namespace slyver
