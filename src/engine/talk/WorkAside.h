#pragma once

#include <optional>
#include <utility>

#include "engine/base/FileError.h"
#include "engine/base/Workers.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// Runs long work that cannot be stopped on its own thread and returns its result. The window stays
/// responsive. Throws what `work` throws, or Cancelled after it if the user has asked to stop.
template <typename Work>
auto WorkAside(Ui& ui, const Work& work) -> decltype(work()) {
  std::optional<decltype(work())> result;
  bool goOn = true;
  RunOnThreads(
      1, [&](unsigned, const Tick&) { result = work(); }, [&] { goOn = ui.GoOn() && goOn; });
  if (!goOn || !ui.GoOn()) throw Cancelled{};
  return std::move(*result);
}

}  // namespace slyver
