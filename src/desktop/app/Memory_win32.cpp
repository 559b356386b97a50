#include <windows.h>

#include "desktop/app/Memory.h"

namespace slyver {

MemoryStatus GlobalMemoryStatus() {
  MEMORYSTATUSEX report = {};
  report.dwLength = sizeof report;
  if (GlobalMemoryStatusEx(&report) == 0) return {};
  return {report.ullTotalPhys, report.ullAvailPhys};
}

}  // namespace slyver
