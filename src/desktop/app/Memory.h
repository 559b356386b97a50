#pragma once

#include <cstdint>

namespace slyver {

/// The computer's physical memory, in bytes.
struct MemoryStatus {
  std::uint64_t totalPhysical = 0;
  std::uint64_t availablePhysical = 0;  ///< What programs could have without others losing theirs.
};

/// The system's own report of its memory. Both figures are 0 where there is none.
MemoryStatus GlobalMemoryStatus();

}  // namespace slyver
