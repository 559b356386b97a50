#include "desktop/app/CpuStats.h"

#include <windows.h>

#include <array>

namespace slyver {

// Reading a value under "StartSrv" or "StartStat" switches on what it names; reading one under
// "StopSrv" switches it off. The value read is not used.
void SwitchCpuStatsOnAndOff() {
  std::array<HKEY, 4> keys = {};
  DWORD ignored = 0;
  const auto open = [&](std::size_t i, const char* path) {
    (void)RegOpenKeyA(HKEY_DYN_DATA, path, &keys.at(i));
  };
  const auto query = [&](std::size_t i, const char* value) {
    DWORD size = sizeof ignored;
    DWORD type = REG_DWORD;
    (void)RegQueryValueExA(keys.at(i), value, nullptr, &type, reinterpret_cast<BYTE*>(&ignored),
                           &size);
  };
  open(0, R"(PerfStats\StatData)");  // Stays open for the reader of the statistics.
  open(1, R"(PerfStats\StartSrv)");
  open(2, R"(PerfStats\StopSrv)");
  query(1, "KERNEL");
  open(3, R"(PerfStats\StartStat)");
  query(3, R"(KERNEL\CPUUsage)");
  (void)RegCloseKey(keys[3]);
  query(2, "KERNEL");
  (void)RegCloseKey(keys[1]);
  (void)RegCloseKey(keys[2]);
}

}  // namespace slyver
