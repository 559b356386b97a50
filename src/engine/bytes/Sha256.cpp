#include "engine/bytes/Sha256.h"

#include <gcrypt.h>

#include <algorithm>
#include <string>

#include "engine/base/FileError.h"
#include "engine/base/Gcrypt.h"

namespace slyver {

Sha256::Sha256() {
  InitGcrypt();
  gcry_md_hd_t handle = nullptr;
  if (const gcry_error_t error = gcry_md_open(&handle, GCRY_MD_SHA256, 0))
    throw Error(std::string("SHA-256: ") + gcry_strerror(error));
  handle_.reset(handle);
}

void Sha256::Close::operator()(gcry_md_handle* handle) const {
  gcry_md_close(handle);
}

void Sha256::Add(std::span<const char> bytes) {
  gcry_md_write(handle_.get(), bytes.data(), bytes.size());
}

void Sha256::AddZeros(std::uint64_t count) {
  static constexpr std::array<char, 65536> zeros = {};
  while (count > 0) {
    const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(count, zeros.size()));
    Add(std::span(zeros).first(part));
    count -= part;
  }
}

Digest Sha256::Finish() {
  Digest digest = {};
  std::copy_n(gcry_md_read(handle_.get(), GCRY_MD_SHA256), digest.size(), digest.begin());
  gcry_md_reset(handle_.get());
  return digest;
}

}  // namespace slyver
