#include "console/Printable.h"

#include <array>
#include <cstdio>

#include "engine/base/Text8.h"

namespace slyver {

namespace {

/// A character, removed from the front of `rest`.
struct Character {
  explicit Character(std::string_view& rest) : bytes(rest), code(TakeCharacter(rest)) {
    bytes.remove_suffix(rest.size());
    if (code == noCharacter) code = static_cast<unsigned char>(bytes.front());
  }
  bool IsControl() const { return code < 0x20 || (code >= 0x7F && code < 0xA0); }

  std::string_view bytes;
  char32_t code;  ///< The byte itself if it is not UTF-8.
};

}  // namespace

std::string Printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const Character character(text);
    const bool stays = !character.IsControl() || character.code == '\n' || character.code == '\t';
    shown += stays ? character.bytes : "?";
  }
  return shown;
}

std::string Quoted(std::string_view name) {
  bool needed = name.starts_with("$'");
  std::string quoted = "$'";
  for (std::string_view rest = name; !rest.empty();) {
    const Character character(rest);
    needed = needed || character.IsControl();
    if (character.code == '\'' || character.code == '\\') quoted += '\\';
    if (!character.IsControl()) quoted += character.bytes;
    for (std::size_t i = 0; character.IsControl() && i < character.bytes.size(); ++i) {
      std::array<char, 5> octal = {};
      (void)std::snprintf(octal.data(), octal.size(), "\\%03o",
                          static_cast<unsigned>(static_cast<unsigned char>(character.bytes[i])));
      quoted += octal.data();
    }
  }
  return needed ? quoted + "'" : std::string(name);
}

}  // namespace slyver
