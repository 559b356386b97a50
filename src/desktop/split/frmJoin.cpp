#include "desktop/split/frmJoin.h"

#include <wx/sizer.h>

#include "desktop/system/StatusLine.h"
#include "desktop/system/WxText.h"

namespace slyver {

namespace {

constexpr int refreshInterval = 100;  // Milliseconds.

}  // namespace

frmJoin::frmJoin(FormHost& host)
    : ModernForm(host, "frmJoin", "Joining Files", Resizing::Fixed),
      PB1_(new wxGauge(ClientArea(), wxID_ANY, ProgressView::range)),
      line_(NewStatusLine(ClientArea(), "StatusLine")),
      view_(PB1_, [this](const std::string& text) { line_->ChangeValue(ToWx(text)); }),
      RefTim_(this) {
  NameControl(*PB1_, "PB1", "Progress");
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(PB1_, wxSizerFlags().Expand().Border(wxTOP | wxBOTTOM, Gap()));
  column->Add(line_, wxSizerFlags().Expand());
  column->SetMinSize(ConvertDialogToPixels(wxSize(220, -1)));
  SetStatusLine(line_);
  FitAndCentre(column);
  line_->SetFocus();
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
