#pragma once

#include <string>

namespace slyver {

/// An age file that was published with the format: the plain bytes are "age".
inline constexpr const char* sampleAgePassphrase = "password";
inline const std::string sampleAge =
    "age-encryption.org/v1\n"
    "-> scrypt rF0/NwblUHHTpgQgRpe5CQ 10\n"
    "gUjEymFKMVXQEKdMMHL24oYexjE3TIC0O0zGSqJ2aUY\n"
    "--- IOXiQYStkoT1mvZW2tFOqZdhRVvj58egABx/sWfZQbc\n"
    "\x1B\x35\xC6\xE6\x87\xDD" +
    std::string(1, '\0') +
    "\xDA:\xC3y\xAC\x9Ft,!\xFD\x18Z\x1B\x9E=\xEDs\x9D\x14\xACj\x9AP\x12M\xB8"
    "f\xD8";

}  // namespace slyver
