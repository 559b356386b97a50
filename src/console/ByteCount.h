#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace slyver {

/// Reads a size such as "1450000", "1.44 MB" or "64K": a decimal number and a unit, in letters of
/// either case. The units are those of coreutils: K, M, G, T, P, E and KiB, MiB, ... (1024 each
/// time), kB, MB, ... (1000), and B. Returns bytes; nothing when the text is no such size, is below
/// one byte, is not a whole number of bytes or does not fit 64 bits.
std::optional<std::uint64_t> ParseByteCount(std::string_view text);

}  // namespace slyver
