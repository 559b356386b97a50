#include "engine/system/Gcrypt.h"

#include <gcrypt.h>

#include "engine/system/FileError.h"

namespace slyver {

void InitGcrypt() {
  static const bool ready = [] {
    if (gcry_check_version(GCRYPT_VERSION) == nullptr)
      throw Error("libgcrypt is older than " GCRYPT_VERSION);
    // Locked memory is a small share that a user's limit may refuse, with a warning on stderr.
    (void)gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    (void)gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    return true;
  }();
  (void)ready;
}

}  // namespace slyver
