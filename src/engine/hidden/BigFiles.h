#pragma once

#include <cstdint>

namespace slyver {

/// Whether the user is asked before work with a file that is quite big: the desktop asks, the
/// terminal does not.
enum class BigFiles { Ask, Take };

/// A file of more bytes than this is quite big.
inline constexpr std::uint64_t quiteBig = 10'000'000;

}  // namespace slyver
