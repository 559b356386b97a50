#include "engine/hidden/Password.h"

#include "engine/base/Text8.h"
#include "engine/hidden/Carrier.h"

namespace slyver {

std::optional<std::string> PasswordText8(std::string_view typed, Ui& ui) {
  std::optional<std::string> password = ToText8(typed);
  if (!password) {
    ui.Message("The Password Has A Character That Cannot Be Used. Choose Another Password.",
               Icon::Information);
  } else if (password->size() > maxNameLength) {
    ui.Message(std::string(passwordTooLong) + " Choose A Shorter One.", Icon::Information);
    password.reset();
  }
  return password;
}

}  // namespace slyver
