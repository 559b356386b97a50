#include "app/frmInit.h"

#include <wx/sizer.h>
#include <wx/stattext.h>

namespace slyver {

frmInit::frmInit(Desktop& desktop)
    : ModernForm(desktop, "frmInit", "Wait.......", Resizing::Fixed) {
  auto* const Label1 =
      new wxStaticText(ClientArea(), wxID_ANY,
                       "Please Wait While Slyver Prepares To Initialize HideFile............");
  Label1->SetName("Label1");
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(Label1, wxSizerFlags().Border(wxALL, Gap()));
  FitAndCentre(column);
}

}  // namespace slyver
