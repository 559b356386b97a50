#include <sys/prctl.h>

#include "engine/base/CoreDump.h"

namespace slyver {

// The size limit of core files would not do: it does not hold where a program takes them.
NoCoreDump::NoCoreDump() : before_(prctl(PR_GET_DUMPABLE)) {
  (void)prctl(PR_SET_DUMPABLE, 0);
}

NoCoreDump::~NoCoreDump() {
  if (before_ == 1) (void)prctl(PR_SET_DUMPABLE, 1);
}

}  // namespace slyver
