#pragma once

namespace slyver {

/// Makes libgcrypt ready; to be called before any other call of it, from any thread, as often as
/// one likes. Throws Error where the installed library is too old.
void InitGcrypt();

}  // namespace slyver
