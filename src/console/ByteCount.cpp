#include "console/ByteCount.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "engine/system/Ascii.h"

namespace slyver {

namespace {

constexpr std::array<std::pair<std::string_view, std::uint64_t>, 8> units = {{
    {"", 1},
    {"b", 1},
    {"kb", 1000},
    {"mb", 1000 * 1000},
    {"gb", 1000 * 1000 * 1000},
    {"kib", 1024},
    {"mib", 1024 * 1024},
    {"gib", 1024 * 1024 * 1024},
}};

/// `a` times `b`, or nothing past 64 bits.
std::optional<std::uint64_t> Product(std::uint64_t a, std::uint64_t b) {
  if (b != 0 && a > std::numeric_limits<std::uint64_t>::max() / b) return std::nullopt;
  return a * b;
}

}  // namespace

std::optional<std::uint64_t> ParseByteCount(std::string_view text) {
  const std::size_t numberEnd = std::min(text.find_first_not_of("0123456789."), text.size());
  const std::string_view number = text.substr(0, numberEnd);
  std::string_view unitName = text.substr(numberEnd);
  unitName.remove_prefix(std::min(unitName.find_first_not_of(' '), unitName.size()));
  const auto* const unit = std::find_if(units.begin(), units.end(), [&](const auto& known) {
    return SameIgnoringCase(unitName, known.first);
  });
  if (unit == units.end() || number.empty()) return std::nullopt;

  // The number is digits / scale, so that no rounding comes in.
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
  const std::optional<std::uint64_t> bytes = Product(*digits, unit->second);
  if (!bytes || *bytes == 0 || *bytes % *scale != 0) return std::nullopt;
  return *bytes / *scale;
}

}  // namespace slyver
