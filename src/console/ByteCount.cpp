#include "console/ByteCount.h"

#include <algorithm>
#include <limits>

#include "engine/base/Ascii.h"

namespace slyver {

namespace {

/// Returns `a` times `b`; `nullopt` above 64 bits.
std::optional<std::uint64_t> Product(std::uint64_t a, std::uint64_t b) {
  if (b != 0 && a > std::numeric_limits<std::uint64_t>::max() / b) return std::nullopt;
  return a * b;
}

/// Returns the bytes of a unit; `nullopt` if unknown.
std::optional<std::uint64_t> UnitOf(std::string_view name) {
  if (name.empty() || SameIgnoringCase(name, "B")) return 1;
  const std::size_t power = std::string_view("kmgtpe").find(LowerAscii(name.front()));
  name.remove_prefix(1);
  const bool decimal = SameIgnoringCase(name, "B");
  if (power == std::string_view::npos || !(decimal || name.empty() || SameIgnoringCase(name, "iB")))
    return std::nullopt;
  std::uint64_t unit = 1;
  for (std::size_t i = 0; i <= power; ++i) unit *= decimal ? 1000 : 1024;
  return unit;
}

}  // namespace

std::optional<std::uint64_t> ParseByteCount(std::string_view text) {
  const std::size_t numberEnd = std::min(text.find_first_not_of("0123456789."), text.size());
  const std::string_view number = text.substr(0, numberEnd);
  std::string_view unitName = text.substr(numberEnd);
  unitName.remove_prefix(std::min(unitName.find_first_not_of(' '), unitName.size()));
  const std::optional<std::uint64_t> unit = UnitOf(unitName);
  if (!unit || number.empty()) return std::nullopt;

  // The number is digits / scale, an exact fraction.
  std::optional<std::uint64_t> digits = 0;
  std::optional<std::uint64_t> scale = 1;
  bool pointSeen = false;
  for (const char c : number) {
    if (c == '.') {
      if (pointSeen) return std::nullopt;
      pointSeen = true;
      continue;
    }
    digits = Product(*digits, 10);
    if (pointSeen) scale = Product(*scale, 10);
    const auto value = static_cast<std::uint64_t>(c - '0');
    if (!digits || !scale || *digits > std::numeric_limits<std::uint64_t>::max() - value)
      return std::nullopt;
    *digits += value;
  }
  const std::optional<std::uint64_t> bytes = Product(*digits, *unit);
  if (!bytes || *bytes == 0 || *bytes % *scale != 0) return std::nullopt;
  return *bytes / *scale;
}

}  // namespace slyver
