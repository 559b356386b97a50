#include <windows.h>

#include "engine/base/CoreDump.h"

namespace slyver {

// Then the system's error reporting, which writes the memory of a program that crashes, is not
// called.
NoCoreDump::NoCoreDump() : before_(static_cast<int>(GetErrorMode())) {
  (void)SetErrorMode(static_cast<UINT>(before_) | SEM_NOGPFAULTERRORBOX);
}

NoCoreDump::~NoCoreDump() {
  (void)SetErrorMode(static_cast<UINT>(before_));
}

}  // namespace slyver
