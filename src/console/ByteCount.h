#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace slyver {

/// Reads a size such as "1450000", "1.44 MB" or "64KiB": a decimal number, and one of the units B,
/// kB, MB, GB (1000 each time) and KiB, MiB, GiB (1024), in letters of either case. Returns bytes;
/// nothing when the text is no such size, is below one byte, is not a whole number of bytes or
/// does not fit 64 bits.
std::optional<std::uint64_t> ParseByteCount(std::string_view text);

}  // namespace slyver
