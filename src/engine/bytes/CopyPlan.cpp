#include "engine/bytes/CopyPlan.h"

#include <algorithm>
#include <utility>

#include "engine/base/PathText.h"

namespace slyver {

namespace {

constexpr std::uint64_t sliceLength = std::uint64_t{4} * 1024 * 1024;
constexpr std::uint64_t sliceChunks = 64;
constexpr std::uint64_t sharedSliceLength = std::uint64_t{64} * 1024 * 1024;

}  // namespace

SourceList::SourceList(std::vector<FileState> states,
                       const std::function<std::string(std::size_t number)>& textOf)
    : states_(std::move(states)) {
  ends_.reserve(states_.size());
  for (std::size_t number = 0; number < states_.size(); ++number) {
    paths_ += textOf(number);
    ends_.push_back(paths_.size());
  }
}

std::uint32_t SourceList::Add(const std::filesystem::path& path, const FileState& state) {
  paths_ += PathText(path);
  ends_.push_back(paths_.size());
  states_.push_back(state);
  return static_cast<std::uint32_t>(ends_.size() - 1);
}

std::filesystem::path SourceList::Path(std::uint32_t number) const {
  const std::size_t begin = number == 0 ? 0 : ends_[number - 1];
  return PathFromText(std::string_view(paths_).substr(begin, ends_[number] - begin));
}

std::filesystem::path TargetNames::Path(std::size_t index) const {
  if (first == 0) return folder / PathFromText(before + after);
  const std::string digits = std::to_string(static_cast<std::size_t>(first) + index);
  const std::string zeros(width - std::min(width, digits.size()), '0');
  return folder / PathFromText(before + zeros + digits + after);
}

std::uint64_t CopyPlan::LengthThere(std::size_t range) const {
  const RangeCipher* const changing = CipherOf(range);
  return changing != nullptr ? changing->TargetLength(ranges[range].length) : ranges[range].length;
}

std::uint64_t CopyPlan::Length(std::size_t target) const {
  std::uint64_t length = 0;
  for (std::size_t i = FirstRange(target); i < rangeEnds[target]; ++i) length += LengthThere(i);
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
    targetOffset += LengthThere(i);
    ofSource += LengthThere(i) - (sharing.byServer ? 0 : shared.end - shared.begin);
    if (i + 1 < ranges.size() && ranges[i + 1].source == ranges[i].source) continue;
    const FileState& state = sources.State(ranges[i].source);
    needed +=
        state.IsSparse() && CipherOf(i) == nullptr ? std::min(ofSource, state.space) : ofSource;
    ofSource = 0;
  }
  return needed;
}

std::uint64_t CopyPlan::SpaceToReserve(std::size_t target, const Sharing& sharing) const {
  std::uint64_t length = 0;
  for (std::size_t i = FirstRange(target); i < rangeEnds[target]; ++i) {
    const Part shared = SharedPart(i, target, length, sharing);
    const bool sparse = sources.State(ranges[i].source).IsSparse() && CipherOf(i) == nullptr;
    if (sparse || (shared.end > shared.begin && !sharing.byServer)) return 0;
    length += LengthThere(i);
  }
  return length;
}

CopyPlan::Part CopyPlan::SharedPart(std::size_t range, std::size_t target,
                                    std::uint64_t targetOffset, const Sharing& sharing) const {
  const auto& [source, offset, length] = ranges[range];
  const FileState& state = sources.State(source);
  const std::uint64_t unit = sharing.unit;
  if (unit == 0 || CipherOf(range) != nullptr || state.device != sharing.device ||
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
  const RangeCipher* const cipher = plan_.CipherOf(range_);
  const std::uint64_t most = plan_.TakesDigests() ? range.length
                             : cipher != nullptr  ? sliceChunks * cipher->SourceChunk()
                             : shared ? std::min(sharedSliceLength, part.end - rangeDone_)
                             : rangeDone_ < part.begin ? part.begin - rangeDone_
                                                       : sliceLength;
  Slice slice;
  slice.target = target_;
  slice.range = range_;
  slice.source = range.source;
  slice.sourceOffset = range.offset + rangeDone_;
  slice.targetOffset = targetDone_;
  slice.length = slice.targetLength = std::min(most, range.length - rangeDone_);
  slice.beginsRange = rangeDone_ == 0;
  slice.endsRange = rangeDone_ + slice.length == range.length;
  slice.shared = shared;
  if (cipher != nullptr) {
    slice.cipher = cipher;
    slice.firstChunk = rangeDone_ / cipher->SourceChunk();
    slice.targetLength = cipher->TargetLength(slice.length);
  }
  rangeDone_ += slice.length;
  targetDone_ += slice.targetLength;
  if (slice.endsRange) {
    ++range_;
    rangeDone_ = 0;
  }
  return slice;
}

}  // namespace slyver
