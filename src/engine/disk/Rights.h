#pragma once

#include <cstdint>

namespace slyver {

/// A file's rights: the nine bits of its mode, and the group that the middle three are for. Ignored
/// on Windows, where the folder decides.
struct Rights {
  static constexpr std::uint32_t anyGroup = UINT32_MAX;

  std::uint16_t bits = 0666;
  bool exact = false;  ///< The user's mask and the folder's default list do not change them.
  std::uint32_t group = anyGroup;
};

/// Returns `rights` for an unknown group: group and others get only what both have.
constexpr Rights ForAnyGroup(Rights rights) {
  const unsigned common = rights.bits & (rights.bits >> 3U) & 07U;
  rights.bits = static_cast<std::uint16_t>((rights.bits & 0700U) | (common << 3U) | common);
  return rights;
}

/// True if everybody may read a file with `rights`.
constexpr bool ForEverybody(const Rights& rights) {
  constexpr unsigned everybodyReads = 044;
  return (rights.bits & everybodyReads) == everybodyReads;
}

/// Returns `rights` without those for people who may not read a file with `other`.
constexpr Rights Narrowed(Rights rights, const Rights& other) {
  constexpr unsigned groupBits = 070;
  constexpr unsigned othersBits = 07;
  const bool groupReads = (other.bits & 040U) != 0;
  const bool othersRead = (other.bits & 04U) != 0;
  const bool sameGroup = rights.group == other.group || other.group == Rights::anyGroup;
  unsigned bits = rights.bits;
  if (!groupReads || (!sameGroup && !othersRead)) bits &= ~groupBits;
  if (!othersRead || (!sameGroup && !groupReads)) bits &= ~othersBits;
  rights.bits = static_cast<std::uint16_t>(bits);
  return rights;
}

/// Returns `rights` without those to execute, for data.
constexpr Rights WithoutExecute(Rights rights) {
  rights.bits &= 0666;
  return rights;
}

}  // namespace slyver
