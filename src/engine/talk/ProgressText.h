#pragma once

#include <string>

#include "engine/talk/Ui.h"

namespace slyver {

/// Formats a byte count in units of 1000 ("999 bytes", "1.45 MB").
std::string ReadableBytes(double bytes);

/// Formats a job's progress as one line: the names that a search has seen, or percent and bytes
/// after `seconds` of copying. After half a second it adds the rate and the time left.
std::string ProgressLine(const Progress& progress, double seconds);

}  // namespace slyver
