#include "engine/base/Gcrypt.h"

#include <gcrypt.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "engine/base/FileError.h"

namespace slyver {

namespace {

/// Throws FileError if libgcrypt would abort the program: this file exists and cannot be opened,
/// for example because too many files are open.
void RequireFipsFlag() {
  std::FILE* const file = std::fopen("/proc/sys/crypto/fips_enabled", "r");
  if (file != nullptr)
    (void)std::fclose(file);
  else if (errno != ENOENT && errno != EACCES)
    throw FileError("libgcrypt", std::error_code(errno, std::generic_category()));
}

}  // namespace

void InitGcrypt() {
  static const bool ready = [] {
    RequireFipsFlag();
    if (gcry_check_version(GCRYPT_VERSION) == nullptr)
      throw Error("libgcrypt is older than " GCRYPT_VERSION);
    // A user's limit may refuse locked memory, and libgcrypt then warns on stderr.
    (void)gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    (void)gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    return true;
  }();
  (void)ready;
}

}  // namespace slyver
