#pragma once

#include <cstdint>

namespace slyver {

/// Who may read, write and run a file: the nine bits of its mode, and the group that the middle
/// three are for. Where a file's folder decides instead, as on Windows, they say nothing.
struct Rights {
  static constexpr std::uint32_t anyGroup = UINT32_MAX;

  std::uint16_t bits = 0666;
  bool exact = false;  ///< Neither the user's mask nor the folder's default list changes them.
  std::uint32_t group = anyGroup;
};

/// `rights`, where it is not known who the group's members are: they may do what anybody may, and
/// so may the others.
constexpr Rights ForAnyGroup(Rights rights) {
  const unsigned common = rights.bits & (rights.bits >> 3U) & 07U;
  rights.bits = static_cast<std::uint16_t>((rights.bits & 0700U) | (common << 3U) | common);
  return rights;
}

/// True if everybody may read what has `rights`.
constexpr bool ForEverybody(const Rights& rights) {
  constexpr unsigned everybodyReads = 044;
  return (rights.bits & everybodyReads) == everybodyReads;
}

/// `rights`, but only for those who may read what `other` is about, too.
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

/// `rights` for data that is no program, whatever it is taken from.
constexpr Rights WithoutExecute(Rights rights) {
  rights.bits &= 0666;
  return rights;
}

}  // namespace slyver
