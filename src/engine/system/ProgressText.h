#pragma once

#include <string>

#include "engine/system/Ui.h"

namespace slyver {

/// A byte count for people: three digits at least and a unit of 1000 ("999 bytes", "1.45 MB").
std::string ReadableBytes(double bytes);

/// One line about a job that has copied for `seconds`: percent, bytes, and once it can be told the
/// rate and the time left.
std::string ProgressLine(const Progress& progress, double seconds);

}  // namespace slyver
