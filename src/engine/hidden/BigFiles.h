#pragma once

#include <cstdint>

namespace slyver {

/// Asks before work with a quite big file, as the desktop does, or not, as the terminal does.
enum class BigFiles { Ask, Take };

/// A file with more bytes is quite big.
inline constexpr std::uint64_t quiteBig = 10'000'000;

}  // namespace slyver
