#include "desktop/app/frmInit.h"

#include <wx/sizer.h>
#include <wx/stattext.h>

#include "desktop/system/StatusLine.h"
#include "desktop/system/WxText.h"
#include "engine/hidden/Carrier.h"

namespace slyver {

frmInit::frmInit(FormHost& host)
    : ModernForm(host, "frmInit", "Wait.......", Resizing::Fixed),
      bar_(new wxGauge(ClientArea(), wxID_ANY, ProgressView::range)),
      line_(NewStatusLine(ClientArea(), "StatusLine")),
      view_(bar_, [this](const std::string& text) { line_->ChangeValue(ToWx(text)); }) {
  auto* const Label1 =
      new wxStaticText(ClientArea(), wxID_ANY,
                       "Please Wait While Slyver Prepares To Initialize HideFile............");
  Label1->SetName("Label1");
  NameControl(*bar_, "Bar", "Progress");
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(Label1, wxSizerFlags().Border(wxTOP | wxBOTTOM, Gap()));
  column->Add(bar_, wxSizerFlags().Expand().Border(wxBOTTOM, Gap()));
  column->Add(line_, wxSizerFlags().Expand());
  SetStatusLine(line_);
  FitAndCentre(column);
  line_->SetFocus();
}

void frmInit::ShowProgress(const Progress& progress) {
  // Of all that is copied only the carrier is worth showing.
  if (progress.bytesTotal > directoryLength) view_.Show(progress);
}

}  // namespace slyver
