#pragma once

namespace slyver {

/// Switches the kernel's CPU-usage statistics on and off again, on systems that keep dynamic
/// performance data. On others nothing happens; a failure goes unnoticed.
void SwitchCpuStatsOnAndOff();

}  // namespace slyver
