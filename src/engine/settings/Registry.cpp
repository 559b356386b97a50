#include "engine/settings/Registry.h"

namespace slyver {

void DeleteFilePathValue() {
  DeleteRegValue(RegRoot::LocalMachine, R"(Software\Orm Valis\FC)", "filepath");
}

}  // namespace slyver
