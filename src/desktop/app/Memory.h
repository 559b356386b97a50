#pragma once

#include <cstdint>

namespace slyver {

/// The computer's physical memory, in bytes.
struct MemoryStatus {
  std::uint64_t totalPhysical = 0;
  std::uint64_t availablePhysical = 0;  ///< Free without swapping.
};

/// Returns the system's memory; both 0 if unknown.
MemoryStatus GlobalMemoryStatus();

}  // namespace slyver
