#include "system/InputBoxM.h"

#include <wx/textctrl.h>
#include <wx/textdlg.h>

#include "chrome/WindowSystem.h"
#include "hidden/Carrier.h"
#include "system/WxText.h"

namespace slyver {

namespace {

class MaskedInputBox final : public wxPasswordEntryDialog {
 public:
  MaskedInputBox(wxWindow* parent, const wxString& prompt)
      : wxPasswordEntryDialog(parent, prompt, "Slyver") {
    SetMaxLength(maxNameLength);
    SetMaskCharacter(*m_textctrl, '*');
    SetAccessibleName(*m_textctrl, prompt);
  }
};

}  // namespace

std::optional<std::string> MaskedInput(wxWindow* parent, std::string_view prompt) {
  MaskedInputBox box(parent, ToWx(prompt));
  if (box.ShowModal() != wxID_OK) return std::nullopt;
  return FromWx(box.GetValue());
}

}  // namespace slyver
