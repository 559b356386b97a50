#pragma once

namespace slyver {

/// Initializes libgcrypt; further calls do nothing. Any thread may call it, and must before any
/// other call of libgcrypt. Jobs call it before they create anything, since libgcrypt may abort the
/// program. Throws Error if the library is too old or too many files are open.
void InitGcrypt();

}  // namespace slyver
