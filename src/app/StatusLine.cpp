#include "app/StatusLine.h"

#include "app/ModernForm.h"

namespace slyver {

wxTextCtrl* NewStatusLine(wxWindow* parent, const wxString& name) {
  auto* const line = new wxTextCtrl(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                    wxTE_READONLY | wxBORDER_NONE | wxTE_NO_VSCROLL);
  line->SetBackgroundColour(parent->GetBackgroundColour());
  NameControl(*line, name, "Progress");
  return line;
}

}  // namespace slyver
