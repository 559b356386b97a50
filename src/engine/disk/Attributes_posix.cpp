#include "engine/disk/Attributes.h"

namespace slyver {

void ClearAttributes(const std::filesystem::path& /*path*/) {}

}  // namespace slyver
