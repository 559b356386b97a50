#pragma once

#include <cstdlib>

namespace slyver {

/// Ends the run, so that the fuzzer keeps the input, when what must hold does not.
inline void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace slyver
