#include "engine/disk/SourceFile.h"

#include <tuple>

#include "engine/base/FileError.h"

namespace slyver {

bool FileState::operator==(const FileState& other) const {
  const auto identity = [](const FileState& state) {
    return std::tie(state.length, state.device, state.number, state.seconds, state.nanoseconds);
  };
  return identity(*this) == identity(other);
}

void SourceFile::ThrowUnlessOpenedAs(const FileState& expected) const {
  if (Opened() != expected) throw FileError(Path(), fileWasChanged);
}

}  // namespace slyver
