#include "desktop/system/ProgressView.h"

#include <algorithm>
#include <cmath>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/ModernForm.h"
#include "desktop/system/StatusLine.h"
#include "desktop/system/WxText.h"
#include "engine/system/ProgressText.h"

namespace slyver {

double BarPosition(const Progress& progress, double before) {
  if (progress.value <= 0 && progress.bytesDone == 0) return 0;
  const double position = progress.bytesTotal > 0 ? 100 * static_cast<double>(progress.bytesDone) /
                                                        static_cast<double>(progress.bytesTotal)
                                                  : progress.value;
  return std::clamp(position, before, 100.0);
}

void Change_pb_Color(wxGauge& bar, const wxColour& colour) {
  SetTroughColour(bar, colour);
}

void Change_pb_ForeColor(wxGauge& bar, const wxColour& colour) {
  SetFillingColour(bar, colour);
}

ProgressView::ProgressView(wxWindow* parent, const wxString& barName, const wxString& lineName)
    : bar_(new wxGauge(parent, wxID_ANY, range)), line_(NewStatusLine(parent, lineName)) {
  NameControl(*bar_, barName, "Progress");
  Change_pb_Color(*bar_, wxColour(214, 220, 222));
  Change_pb_ForeColor(*bar_, wxColour(42, 157, 143));
  bar_->SetMinSize({-1, bar_->GetCharHeight() / 2});
}

void ProgressView::SetLine(const std::string& text) {
  line_->ChangeValue(ToWx(text));
}

void ProgressView::Show(const Progress& progress) {
  position_ = BarPosition(progress, position_);
  const int value = static_cast<int>(std::lround(position_ / 100 * range));
  if (bar_->GetValue() != value) bar_->SetValue(value);

  const Clock::time_point now = Clock::now();
  if (!copying_) started_ = now;
  copying_ = progress.bytesTotal > 0;
  // Twice a second is as fast as one can read.
  constexpr std::chrono::milliseconds lineInterval{500};
  if ((!copying_ && progress.searched == 0) || now - lineSet_ < lineInterval) return;
  lineSet_ = now;
  const std::string line =
      ProgressLine(progress, std::chrono::duration<double>(now - started_).count());
  SetLine(line.substr(std::min(line.find_first_not_of(' '), line.size())));
}

void ProgressView::Clear() {
  position_ = 0;
  copying_ = false;
  bar_->SetValue(0);
  SetLine("");
}

}  // namespace slyver
