#include "engine/bytes/CopyPlan.h"

#include <algorithm>

#include "engine/base/Ascii.h"
#include "engine/base/Numbers.h"
#include "engine/base/PathText.h"

namespace slyver {

namespace {

constexpr std::uint64_t sliceLength = std::uint64_t{4} * 1024 * 1024;
constexpr std::uint64_t sharedSliceLength = std::uint64_t{64} * 1024 * 1024;

}  // namespace

std::filesystem::path TargetNames::Path(std::size_t index) const {
  if (first == 0) return folder / PathFromText(before + after);
  const std::string digits = std::to_string(static_cast<std::size_t>(first) + index);
  const std::string zeros(width - std::min(width, digits.size()), '0');
  return folder / PathFromText(before + zeros + digits + after);
}

int TargetNames::NumberOf(std::string_view name) const {
  if (name.size() < before.size() + after.size() || !name.starts_with(before) ||
      !EndsIgnoringCase(name, after))
    return 0;
  const std::string_view digits =
      name.substr(before.size(), name.size() - before.size() - after.size());
  if (digits.size() > 5 || digits.starts_with('0')) return 0;
  return static_cast<int>(NumberIn<unsigned>(digits).value_or(0));
}

std::uint64_t CopyPlan::Length(std::size_t target) const {
  std::uint64_t length = 0;
  for (std::size_t i = FirstRange(target); i < rangeEnds[target]; ++i) length += ranges[i].length;
  return length;
}

std::uint64_t CopyPlan::TotalLength() const {
  std::uint64_t length = 0;
  for (const ByteRange& range : ranges) length += range.length;
  return length;
}

std::uint64_t CopyPlan::SpaceNeeded(const Sharing& sharing) const {
  std::uint64_t needed = 0;
  std::uint64_t ofSource = 0;  // For consecutive ranges of the same source.
  std::uint64_t targetOffset = 0;
  for (std::size_t i = 0, target = 0; i < ranges.size(); ++i) {
    for (; i == rangeEnds[target]; ++target) targetOffset = 0;
    const Part shared = SharedPart(i, target, targetOffset, sharing);
    targetOffset += ranges[i].length;
    ofSource += ranges[i].length - (sharing.byServer ? 0 : shared.end - shared.begin);
    if (i + 1 < ranges.size() && ranges[i + 1].source == ranges[i].source) continue;
    const FileState& state = sources.State(ranges[i].source);
    needed += state.IsSparse() ? std::min(ofSource, state.space) : ofSource;
    ofSource = 0;
  }
  return needed;
}

std::uint64_t CopyPlan::SpaceToReserve(std::size_t target, const Sharing& sharing) const {
  std::uint64_t length = 0;
  for (std::size_t i = FirstRange(target); i < rangeEnds[target]; ++i) {
    const Part shared = SharedPart(i, target, length, sharing);
    if (sources.State(ranges[i].source).IsSparse() ||
        (shared.end > shared.begin && !sharing.byServer))
      return 0;
    length += ranges[i].length;
  }
  return length;
}

CopyPlan::Part CopyPlan::SharedPart(std::size_t range, std::size_t target,
                                    std::uint64_t targetOffset, const Sharing& sharing) const {
  const auto& [source, offset, length] = ranges[range];
  const FileState& state = sources.State(source);
  const std::uint64_t unit = sharing.unit;
  if (unit == 0 || !sources.IsFile(source) || state.device != sharing.device ||
      offset % unit != targetOffset % unit)
    return {};
  const std::uint64_t begin = (unit - offset % unit) % unit;
  // A file's last block may be incomplete. It can be cloned if it is the last one of both files.
  const bool endsBoth = offset + length == state.length && range + 1 == rangeEnds[target];
  const std::uint64_t end = length - (endsBoth ? 0 : std::min(length, (offset + length) % unit));
  return begin < end ? Part{begin, end} : Part{};
}

std::optional<Slice> SliceCursor::Next(const Sharing& sharing) {
  if (range_ == plan_.ranges.size()) return std::nullopt;
  if (range_ == plan_.rangeEnds[target_]) {
    ++target_;
    targetDone_ = 0;
  }
  const ByteRange& range = plan_.ranges[range_];
  const CopyPlan::Part part = plan_.SharedPart(range_, target_, targetDone_ - rangeDone_, sharing);
  const bool shared = part.begin <= rangeDone_ && rangeDone_ < part.end;
  const std::uint64_t most = plan_.TakesDigests() ? range.length
                             : shared ? std::min(sharedSliceLength, part.end - rangeDone_)
                             : rangeDone_ < part.begin ? part.begin - rangeDone_
                                                       : sliceLength;
  Slice slice;
  slice.target = target_;
  slice.range = range_;
  slice.source = range.source;
  slice.sourceOffset = range.offset + rangeDone_;
  slice.targetOffset = targetDone_;
  slice.length = std::min(most, range.length - rangeDone_);
  if (slice.length < range.length - rangeDone_)
    slice.length =
        plan_.sources.Cut(range.source, slice.sourceOffset, slice.sourceOffset + slice.length) -
        slice.sourceOffset;
  slice.beginsRange = rangeDone_ == 0;
  slice.shared = shared;
  rangeDone_ += slice.length;
  targetDone_ += slice.length;
  if (rangeDone_ == range.length) {
    ++range_;
    rangeDone_ = 0;
  }
  return slice;
}

}  // namespace slyver
