#include "system/SourceFile.h"

#include "system/FileError.h"

namespace slyver {

void SourceFile::ThrowUnlessOpenedAs(const FileState& expected) const {
  if (Opened() != expected) throw FileError(Path(), fileWasChanged);
}

}  // namespace slyver
