#pragma once

#include <string>

#include "engine/talk/Ui.h"

namespace slyver {

/// A byte count as people read it, in units of 1000 ("999 bytes", "1.45 MB").
std::string ReadableBytes(double bytes);

/// One line about a job: how many names a search has seen; or, where bytes have been copied for
/// `seconds`, percent, bytes, and after half a second the rate and the time left.
std::string ProgressLine(const Progress& progress, double seconds);

}  // namespace slyver
