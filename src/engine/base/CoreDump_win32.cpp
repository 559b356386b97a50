#include <windows.h>

#include "engine/base/CoreDump.h"

namespace slyver {

// The system's error reporting writes the memory of a program that crashes to the disk.
NoCoreDump::NoCoreDump() : before_(static_cast<int>(GetErrorMode())) {
  (void)SetErrorMode(static_cast<UINT>(before_) | SEM_NOGPFAULTERRORBOX);
}

NoCoreDump::~NoCoreDump() {
  (void)SetErrorMode(static_cast<UINT>(before_));
}

}  // namespace slyver
