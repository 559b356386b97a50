#include <sys/prctl.h>

#include "engine/base/CoreDump.h"

namespace slyver {

// The size limit of core files does not apply if a program collects them.
NoCoreDump::NoCoreDump() : before_(prctl(PR_GET_DUMPABLE)) {
  (void)prctl(PR_SET_DUMPABLE, 0);
}

NoCoreDump::~NoCoreDump() {
  if (before_ == 1) (void)prctl(PR_SET_DUMPABLE, 1);
}

}  // namespace slyver
