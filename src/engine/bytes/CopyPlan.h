#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/bytes/Sha256.h"
#include "engine/bytes/Source.h"
#include "engine/disk/Rights.h"
#include "engine/disk/TargetFile.h"

namespace slyver {

/// Consecutive bytes of one source; `offset` and `length` in bytes.
struct ByteRange {
  std::uint32_t source = 0;
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
};

/// The names of the targets: `before`, a number, and `after`.
struct TargetNames {
  std::filesystem::path folder;
  std::string before;
  std::string after;
  int first = 0;          ///< The first target's number; 0 for a single target without a number.
  std::size_t width = 0;  ///< Numbers have at least so many digits.

  /// Returns the path of target `index`, from 0.
  std::filesystem::path Path(std::size_t index) const;

  /// Returns the number, 1 to 99999, of the target `name`, without leading zeros and with the case
  /// of `after` ignored; 0 if it has another name.
  int NumberOf(std::string_view name) const;
};

/// A file next to a set of targets that lists their digests.
struct DigestList {
  std::string name;      ///< In the targets' folder; empty if the set can have none.
  bool isThere = false;  ///< The folder has one that belongs to the earlier set.
  /// Returns the line of target `index`, with its end, of the same length for any digest. Null to
  /// write no list.
  std::function<std::string(std::size_t index, const Digest& digest)> line;
};

/// What to copy, as plain data: every target consists of one range or more, in order.
struct CopyPlan {
  SourceList sources;
  std::vector<ByteRange> ranges;         ///< Target after target.
  std::vector<std::uint32_t> rangeEnds;  ///< The end of each target in `ranges`.
  TargetNames names;
  Rights rights;
  Existing existing = Existing::Keep;  ///< What to do with existing targets.
  /// The targets are a set: with Existing::Keep the folder must not contain files with such names;
  /// with Existing::Replace they are deleted when the new set is complete.
  bool isSet = false;
  /// StateOfFirst() when the user agreed to replace the earlier set. Another one is not replaced.
  std::optional<FileState> replaces;
  DigestList list;
  /// The digests that the first ranges must have.
  std::vector<Digest> expected;
  /// The digest that all ranges together must have. Excludes `expected`.
  std::optional<Digest> expectedOfAll;
  bool flush = false;  ///< Flushes the targets and their folder at the end.

  /// Ends a target with the ranges added since the last one.
  void EndTarget() { rangeEnds.push_back(static_cast<std::uint32_t>(ranges.size())); }

  /// True if each range's digest is computed.
  bool TakesDigests() const { return list.line || !expected.empty(); }
  /// True if any digest is computed.
  bool LooksAtBytes() const { return TakesDigests() || expectedOfAll; }

  /// True if targets are flushed.
  bool Flushes() const { return flush || existing == Existing::Replace; }

  std::size_t TargetCount() const { return rangeEnds.size(); }
  std::size_t FirstRange(std::size_t target) const {
    return target == 0 ? 0 : rangeEnds[target - 1];
  }
  /// Returns the length of a target in bytes.
  std::uint64_t Length(std::size_t target) const;
  /// Returns the sum of all lengths, in bytes.
  std::uint64_t TotalLength() const;
  /// Returns the most space that the targets can take, in bytes. Holes and cloned blocks take none.
  std::uint64_t SpaceNeeded(const Sharing& sharing) const;
  /// Returns the space to reserve for a target, in bytes; 0 if it may have holes or cloned blocks.
  std::uint64_t SpaceToReserve(std::size_t target, const Sharing& sharing) const;

  /// Returns the bytes of a range, from its start, that can be cloned to `targetOffset` of
  /// `target`.
  struct Part {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
  };
  Part SharedPart(std::size_t range, std::size_t target, std::uint64_t targetOffset,
                  const Sharing& sharing) const;
};

/// The part of a range that is copied at a time; empty for an empty range.
struct Slice {
  std::size_t target = 0;
  std::size_t range = 0;
  std::uint32_t source = 0;
  std::uint64_t sourceOffset = 0;
  std::uint64_t targetOffset = 0;
  std::uint64_t length = 0;
  bool beginsRange = false;
  bool shared = false;  ///< The file system can clone it.
};

/// Returns a plan's slices in order. For digests they are whole ranges, so that one thread reads
/// all bytes of each.
class SliceCursor {
 public:
  /// `plan` must outlive the cursor.
  explicit SliceCursor(const CopyPlan& plan) : plan_(plan) {}

  /// Returns the next slice, given how blocks can be cloned; `nullopt` after the last one.
  std::optional<Slice> Next(const Sharing& sharing);

 private:
  const CopyPlan& plan_;
  std::size_t target_ = 0;
  std::size_t range_ = 0;
  std::uint64_t rangeDone_ = 0;
  std::uint64_t targetDone_ = 0;
};

}  // namespace slyver
