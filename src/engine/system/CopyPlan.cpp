#include "engine/system/CopyPlan.h"

#include <algorithm>

#include "engine/system/PathText.h"

namespace slyver {

namespace {

constexpr std::uint64_t sliceLength = std::uint64_t{4} * 1024 * 1024;

}  // namespace

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

std::uint64_t CopyPlan::SpaceNeeded() const {
  std::uint64_t needed = 0;
  for (std::size_t i = 0; i < ranges.size();) {
    const std::uint32_t source = ranges[i].source;
    std::uint64_t length = 0;
    for (; i < ranges.size() && ranges[i].source == source; ++i) length += ranges[i].length;
    needed +=
        sources.State(source).IsSparse() ? std::min(length, sources.State(source).space) : length;
  }
  return needed;
}

bool CopyPlan::HasHoles(std::size_t target) const {
  return std::any_of(
      ranges.begin() + static_cast<std::ptrdiff_t>(FirstRange(target)),
      ranges.begin() + static_cast<std::ptrdiff_t>(rangeEnds[target]),
      [&](const ByteRange& range) { return sources.State(range.source).IsSparse(); });
}

std::optional<Slice> SliceCursor::Next() {
  if (range_ == plan_.ranges.size()) return std::nullopt;
  if (range_ == plan_.rangeEnds[target_]) {
    ++target_;
    targetDone_ = 0;
  }
  const ByteRange& range = plan_.ranges[range_];
  const Slice slice{target_,
                    range.source,
                    range.offset + rangeDone_,
                    targetDone_,
                    std::min(sliceLength, range.length - rangeDone_),
                    rangeDone_ == 0};
  rangeDone_ += slice.length;
  targetDone_ += slice.length;
  if (rangeDone_ == range.length) {
    ++range_;
    rangeDone_ = 0;
  }
  return slice;
}

}  // namespace slyver
