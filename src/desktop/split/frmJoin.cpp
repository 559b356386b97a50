#include "desktop/split/frmJoin.h"

#include <wx/sizer.h>

namespace slyver {

namespace {

constexpr int refreshInterval = 100;  // Milliseconds.

}  // namespace

frmJoin::frmJoin(FormHost& host)
    : ModernForm(host, "frmJoin", "Joining Files", Resizing::Fixed),
      view_(ClientArea(), "PB1", "StatusLine"),
      RefTim_(this) {
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(view_.Bar(), wxSizerFlags().Expand().Border(wxTOP | wxBOTTOM, Gap()));
  column->AddStretchSpacer();
  column->Add(view_.Line(), wxSizerFlags().Expand());
  column->SetMinSize(ConvertDialogToPixels(wxSize(220, -1)));
  SetStatusLine(view_.Line());
  FitAndCentre(column);
  view_.Line()->SetFocus();
  Bind(wxEVT_TIMER, [this](wxTimerEvent&) { RefTim_Timer(); });
  RefTim_.Start(refreshInterval);
}

void frmJoin::ShowProgress(const Progress& progress) {
  if (progress.bar == "PB1") view_.Show(progress);
}

void frmJoin::RefTim_Timer() {
  Refresh();
  if (!App().JobRuns()) RefTim_.Stop();
}

}  // namespace slyver
