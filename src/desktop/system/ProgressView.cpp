#include "desktop/system/ProgressView.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "desktop/chrome/WindowSystem.h"
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

ProgressView::ProgressView(wxGauge* bar, std::function<void(const std::string&)> setLine)
    : bar_(bar), setLine_(std::move(setLine)) {
  bar_->SetRange(range);
  Change_pb_Color(*bar_, wxColour(214, 220, 222));
  Change_pb_ForeColor(*bar_, wxColour(42, 157, 143));
  bar_->SetMinSize({-1, bar_->GetCharHeight() / 2});
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
  if (!copying_ || now - lineSet_ < lineInterval) return;
  lineSet_ = now;
  const std::string line =
      ProgressLine(progress, std::chrono::duration<double>(now - started_).count());
  setLine_(line.substr(std::min(line.find_first_not_of(' '), line.size())));
}

void ProgressView::Clear() {
  position_ = 0;
  copying_ = false;
  bar_->SetValue(0);
  setLine_("");
}

}  // namespace slyver
