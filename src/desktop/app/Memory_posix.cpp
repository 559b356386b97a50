#include <fstream>
#include <limits>
#include <string>

#include "desktop/app/Memory.h"

namespace slyver {

MemoryStatus GlobalMemoryStatus() {
  constexpr std::uint64_t bytesPerUnit = 1024;
  MemoryStatus status;
  std::ifstream report("/proc/meminfo");
  std::string name;
  std::uint64_t amount = 0;
  while (report >> name >> amount) {
    if (name == "MemTotal:") status.totalPhysical = amount * bytesPerUnit;
    if (name == "MemAvailable:") status.availablePhysical = amount * bytesPerUnit;
    report.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return status;
}

}  // namespace slyver
