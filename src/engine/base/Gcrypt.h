#pragma once

namespace slyver {

/// Initializes libgcrypt; further calls do nothing. Must be called before any other call of
/// libgcrypt, from any thread. Jobs call it before they create anything, since libgcrypt may abort
/// the program. Throws Error if the library is too old or too many files are open.
void InitGcrypt();

}  // namespace slyver
