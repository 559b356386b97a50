#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/bytes/RangeCipher.h"
#include "engine/bytes/Sha256.h"
#include "engine/disk/Rights.h"
#include "engine/disk/SourceFile.h"
#include "engine/disk/TargetFile.h"

namespace slyver {

/// The files that a plan reads: a path each, and the state that the file must still be in. The
/// paths are packed: there may be 32767, and path objects take several times the memory.
class SourceList {
 public:
  SourceList() = default;
  /// As many files as there are states; `textOf` gives their paths as PathText() has them.
  SourceList(std::vector<FileState> states,
             const std::function<std::string(std::size_t number)>& textOf);

  /// Returns the new source's number, counted from 0.
  std::uint32_t Add(const std::filesystem::path& path, const FileState& state);

  std::filesystem::path Path(std::uint32_t number) const;
  const FileState& State(std::uint32_t number) const { return states_[number]; }

 private:
  std::string paths_;
  std::vector<std::size_t> ends_;  ///< Where in `paths_` each one ends.
  std::vector<FileState> states_;
};

/// A run of bytes of one source: `length` bytes from `offset`, both in bytes, offsets from 0.
struct ByteRange {
  std::uint32_t source = 0;
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
};

/// What the targets are called.
struct TargetNames {
  std::filesystem::path folder;
  std::string before;  ///< A name is this, the target's number, and `after`.
  std::string after;
  int first = 0;          ///< The first target's number; 0 where there is one, and it has none.
  std::size_t width = 0;  ///< Numbers are filled with zeros to so many digits.

  /// The path of target `index`, counted from 0.
  std::filesystem::path Path(std::size_t index) const;
};

/// A file beside a set of targets that lists their digests.
struct DigestList {
  std::string name;  ///< In the targets' folder. Empty: their set can have none.
  /// The line of target `index`, with its end; equally long whatever the digest. Null: none is
  /// written.
  std::function<std::string(std::size_t index, const Digest& digest)> line;
};

/// What is to be copied, as plain data: every target is made of one range or more, in order.
struct CopyPlan {
  SourceList sources;
  std::vector<ByteRange> ranges;         ///< Target after target.
  std::vector<std::uint32_t> rangeEnds;  ///< Where in `ranges` each target's end.
  TargetNames names;
  Rights rights;
  Existing existing = Existing::Keep;  ///< What becomes of files that bear the names already.
  /// What changes the bytes of one range, or null. No digests are taken then.
  std::shared_ptr<const RangeCipher> cipher;
  std::size_t ciphered = 0;  ///< Which range that is.

  /// Where the targets are one set of numbered files: the number of the file in their folder
  /// that has the name `name`, numberOfList where it is their list, and 0 where it is neither. With
  /// Existing::Keep there must be none; with Existing::Replace all of them go when the new set is
  /// complete.
  std::function<int(const std::string& name)> numberInSet;
  static constexpr int numberOfList = std::numeric_limits<int>::max();

  DigestList list;
  /// What the bytes of as many ranges, from the first on, must have.
  std::vector<Digest> expected;
  /// What the bytes of all ranges together must have; not where the others are set.
  std::optional<Digest> expectedOfAll;
  bool flush = false;  ///< At the end the targets, and their names, are on the disk.

  /// Closes a target that is made of the ranges added since the last one.
  void EndTarget() { rangeEnds.push_back(static_cast<std::uint32_t>(ranges.size())); }

  /// Whether each range's bytes are looked at while they are copied.
  bool TakesDigests() const { return list.line || !expected.empty(); }
  /// Whether any bytes are looked at while they are copied.
  bool LooksAtBytes() const { return TakesDigests() || expectedOfAll; }

  /// Whether the disk is waited for.
  bool Flushes() const { return flush || existing == Existing::Replace; }

  std::size_t TargetCount() const { return rangeEnds.size(); }
  std::size_t FirstRange(std::size_t target) const {
    return target == 0 ? 0 : rangeEnds[target - 1];
  }
  /// What changes the bytes of a range; null where they stay as they are.
  const RangeCipher* CipherOf(std::size_t range) const {
    return range == ciphered ? cipher.get() : nullptr;
  }
  /// The length in bytes that a range has in its target.
  std::uint64_t LengthThere(std::size_t range) const;
  /// The length of a target in bytes.
  std::uint64_t Length(std::size_t target) const;
  /// The sum of all lengths in bytes, as they are read.
  std::uint64_t TotalLength() const;
  /// The most space, in bytes, that the targets can take: holes in sources take none, and neither
  /// do shared blocks.
  std::uint64_t SpaceNeeded(const Sharing& sharing) const;
  /// The space, in bytes, to reserve for a target: none where parts of it may take none.
  std::uint64_t SpaceToReserve(std::size_t target, const Sharing& sharing) const;

  /// Which bytes of the range `range`, counted from its first, the file system brings over by
  /// itself, when the range goes to `targetOffset` of the target `target`.
  struct Part {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
  };
  Part SharedPart(std::size_t range, std::size_t target, std::uint64_t targetOffset,
                  const Sharing& sharing) const;
};

/// What is brought over at a time: a part of one range, without bytes where the range has none.
struct Slice {
  std::size_t target = 0;
  std::size_t range = 0;
  std::uint32_t source = 0;
  std::uint64_t sourceOffset = 0;
  std::uint64_t targetOffset = 0;
  std::uint64_t length = 0;
  std::uint64_t targetLength = 0;
  bool beginsRange = false;
  bool endsRange = false;
  bool shared = false;                  ///< Whether the file system can bring it over by itself.
  const RangeCipher* cipher = nullptr;  ///< The range's; then the slice is made of whole chunks,
  std::uint64_t firstChunk = 0;         ///< of which this is the first one's number.
};

/// Hands out a plan's slices in order: whole ranges where their digests are taken, so that one
/// thread sees all bytes of each.
class SliceCursor {
 public:
  /// `plan` outlives the cursor.
  explicit SliceCursor(const CopyPlan& plan) : plan_(plan) {}

  /// The next slice, where the file system does by itself what `sharing` says; nothing after the
  /// last one.
  std::optional<Slice> Next(const Sharing& sharing);

 private:
  const CopyPlan& plan_;
  std::size_t target_ = 0;
  std::size_t range_ = 0;
  std::uint64_t rangeDone_ = 0;
  std::uint64_t targetDone_ = 0;
};

}  // namespace slyver
