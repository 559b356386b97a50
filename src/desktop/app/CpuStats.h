#pragma once

namespace slyver {

/// Switches the kernel's CPU-usage statistics on and off again. Does nothing on systems without
/// dynamic performance data. Failures are ignored.
void SwitchCpuStatsOnAndOff();

}  // namespace slyver
