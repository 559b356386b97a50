#include "desktop/system/StatusLine.h"

#include <algorithm>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/ModernForm.h"

namespace slyver {

wxTextCtrl* NewStatusLine(wxWindow* parent, const wxString& name) {
  auto* const line = new wxTextCtrl(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                    wxTE_READONLY | wxBORDER_NONE | wxTE_NO_VSCROLL);
  ShowAsPlainText(*line);
  line->SetMinSize({-1, std::max(line->GetBestSize().y, line->GetCharHeight() * 5 / 4)});
  line->DisableFocusFromKeyboard();
  NameControl(*line, name, "Progress");
  return line;
}

}  // namespace slyver
