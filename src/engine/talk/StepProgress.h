#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "engine/bytes/Copy.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// A progress bar's next value, 0 to 100, from its present one, when range number `index` (from 0)
/// is begun.
using NextValue = std::function<double(double value, std::size_t index)>;

/// A watch that sets the bar `bar` once for every range begun, and again as bytes are copied, and
/// asks `ui` whether to go on. The bar starts at `value` and never passes 100.
Watch StepProgress(Ui& ui, std::string_view bar, double value, NextValue next);

}  // namespace slyver
