#include "desktop/app/CpuStats.h"

namespace slyver {

void SwitchCpuStatsOnAndOff() {}

}  // namespace slyver
