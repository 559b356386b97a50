#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "engine/bytes/Copy.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// Returns a progress bar's next value, 0 to 100, when range number `index` (from 0) starts.
using NextValue = std::function<double(double value, std::size_t index)>;

/// Returns a watch that sets the bar `bar` once for every range started, and again as bytes are
/// copied. The watch returns ui.GoOn(). The bar starts at `value` and stops at 100.
Watch StepProgress(Ui& ui, std::string_view bar, double value, NextValue next);

}  // namespace slyver
