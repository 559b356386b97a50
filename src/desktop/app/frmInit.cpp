#include "desktop/app/frmInit.h"

#include <wx/sizer.h>

#include "desktop/system/Controls.h"

namespace slyver {

frmInit::frmInit(FormHost& host)
    : ModernForm(host, "frmInit", "Wait.......", Resizing::Fixed),
      view_(ClientArea(), "Bar", "StatusLine") {
  wxStaticText* const Label1 =
      NewLabel(ClientArea(), "Please Wait While Slyver Prepares To Initialize HideFile............",
               "Label1");
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(Label1, wxSizerFlags().Border(wxTOP | wxBOTTOM, Gap()));
  column->Add(view_.Bar(), wxSizerFlags().Expand().Border(wxBOTTOM, Gap()));
  column->AddStretchSpacer();
  column->Add(view_.Line(), wxSizerFlags().Expand());
  SetStatusLine(view_.Line());
  FitAndCentre(column);
  view_.Line()->SetFocus();
}

void frmInit::ShowProgress(const Progress& progress) {
  view_.Show(progress);
}

}  // namespace slyver
