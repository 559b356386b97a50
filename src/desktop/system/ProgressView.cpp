#include "desktop/system/ProgressView.h"

#include <wx/settings.h>

#include <algorithm>
#include <cmath>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/ModernForm.h"
#include "desktop/system/StatusLine.h"
#include "desktop/system/WxText.h"
#include "engine/talk/ProgressText.h"

namespace slyver {

namespace {

/// Returns a colour of low contrast to the background of `window`, light or dark.
wxColour QuietColour(const wxWindow& window) {
  constexpr unsigned char part = 40;  // Of 255.
  const wxColour text = wxSystemSettings::GetColour(wxSYS_COLOUR_BTNTEXT);
  const wxColour behind = window.GetParent()->GetBackgroundColour();
  const auto blend = [](unsigned char over, unsigned char under) {
    return static_cast<unsigned char>((over * part + under * (255 - part)) / 255);
  };
  return {blend(text.Red(), behind.Red()), blend(text.Green(), behind.Green()),
          blend(text.Blue(), behind.Blue())};
}

}  // namespace

double BarPosition(const Progress& progress, double before) {
  if (progress.bytesTotal > 0)
    return 100 * static_cast<double>(progress.bytesDone) / static_cast<double>(progress.bytesTotal);
  return progress.value <= 0 ? 0 : std::clamp(progress.value, before, 100.0);
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
  Change_pb_Color(*bar_, QuietColour(*bar_));
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
  // Nobody reads faster than twice a second. The end is always shown.
  constexpr std::chrono::milliseconds lineInterval{500};
  const bool atEnd = copying_ && progress.bytesDone == progress.bytesTotal;
  if ((!copying_ && progress.searched == 0) || (now - lineSet_ < lineInterval && !atEnd)) return;
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
