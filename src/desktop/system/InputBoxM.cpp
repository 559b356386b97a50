#include "desktop/system/InputBoxM.h"

#include <wx/textctrl.h>
#include <wx/textdlg.h>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/WxText.h"
#include "engine/hidden/Carrier.h"

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
