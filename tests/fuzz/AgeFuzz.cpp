#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "engine/age/Age.h"
#include "fuzz/Require.h"
#include "support/SampleAge.h"

using namespace slyver;

namespace {

constexpr std::string_view passphrase = "p";
const std::string plain(65536 + 3, 'x');

/// The plain bytes of a file; empty when it is refused.
std::string Opened(std::string_view file) try {
  const auto header = ReadAgeHeader(file.substr(0, ageHeaderRoom), file.size(), "N");
  if (!header) return {};
  Require(header->workFactor >= 1 && header->workFactor <= ageMostWork);
  Require(header->length + 16 <= file.size() && file.starts_with(header->text));
  // Nothing that is cheap to try opens what was not made here.
  return header->workFactor < 10 ? Decrypted(file, *header, passphrase).value_or("") : "";
} catch (const std::exception&) {
  return {};
}

}  // namespace

/// The input is an age file, and also a list of changes to one: an offset in two bytes, the lower
/// first, and what the byte there is changed by; behind the header's offsets come those of the end.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Require(Opened(std::string(data, data + size)).empty());

  static const std::string made = AgeFileOf(plain, passphrase);
  static const bool opens = Opened(made) == plain;
  Require(opens);
  std::string changed = made;
  for (std::size_t i = 0; i + 2 < size; i += 3) {
    const std::size_t offset = (data[i] | data[i + 1] << 8U) % 512;
    const std::size_t at = offset < 256 ? offset : changed.size() - (offset - 256);
    if (at < changed.size())
      changed[at] = static_cast<char>(changed[at] ^ data[i + 2]);
    else if (data[i + 2] % 2 == 0)
      changed += static_cast<char>(data[i + 2]);
    else
      changed.resize(changed.size() - std::min<std::size_t>(data[i + 2], changed.size() / 2));
  }
  Require(changed == made || Opened(changed).empty());
  return 0;
}
