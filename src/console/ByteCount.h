#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace slyver {

/// Parses a size such as "1450000", "1.44 MB" or "64K": a decimal number and a unit, in either
/// case. Units are those of coreutils: K, M, G, T, P, E or KiB, MiB, ... (powers of 1024), kB, MB,
/// ... (powers of 1000), and B. Returns bytes; `nullopt` if the text is not a size, not a whole
/// number of bytes, below 1 byte or above 64 bits.
std::optional<std::uint64_t> ParseByteCount(std::string_view text);

}  // namespace slyver
