#include "engine/disk/TargetFile.h"

#include <array>
#include <cstdio>

#include "engine/base/PathText.h"

namespace slyver {

std::filesystem::path TemporaryPath(const std::filesystem::path& target) {
  // FNV-1a with 64 bits: the name must be stable and practically unique.
  std::uint64_t hash = 14695981039346656037U;
  for (const char c : PathText(target.filename()))
    hash = (hash ^ static_cast<std::uint8_t>(c)) * 1099511628211U;
  std::array<char, 32> name = {};
  (void)std::snprintf(name.data(), name.size(), ".slyver-%016llx.tmp",
                      static_cast<unsigned long long>(hash));
  return target.parent_path() / name.data();
}

}  // namespace slyver
