#include "engine/talk/StepProgress.h"

#include <algorithm>
#include <utility>

namespace slyver {

Watch StepProgress(Ui& ui, std::string_view bar, double value, NextValue next) {
  return [&ui, bar, value, next = std::move(next),
          shown = std::size_t{0}](const CopyProgress& progress) mutable {
    const auto show = [&] {
      ui.SetProgress({bar, value, progress.bytesDone, progress.bytesTotal});
    };
    if (shown == progress.rangesStarted) show();
    for (; shown < progress.rangesStarted; ++shown) {
      value = std::min(next(value, shown), 100.0);
      show();
    }
    return ui.GoOn();
  };
}

}  // namespace slyver
