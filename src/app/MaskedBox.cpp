#include "app/MaskedBox.h"

#include "app/ModernForm.h"
#include "chrome/WindowSystem.h"
#include "hidden/Carrier.h"

namespace slyver {

wxTextCtrl* NewMaskedBox(wxWindow* parent, const wxString& name, const wxString& forScreenReaders) {
  auto* const box = new wxTextCtrl(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                   wxTE_PASSWORD | wxTE_PROCESS_ENTER);
  box->SetMaxLength(maxNameLength);
  SetMaskCharacter(*box, '*');
  NameControl(*box, name, forScreenReaders);
  return box;
}

}  // namespace slyver
