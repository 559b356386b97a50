#pragma once

#include <wx/gauge.h>
#include <wx/textctrl.h>

#include <chrono>
#include <string>

#include "engine/talk/Ui.h"

namespace slyver {

/// Where a bar stands, 0 to 100, after `progress` has come, when it stood at `before`: at the share
/// of the bytes copied, whatever the step, since a step may have gigabytes before it. Without
/// bytes, and while a directory is read, at the value set; it does not go back then, but to 0.
double BarPosition(const Progress& progress, double before);

/// The colour of a progress bar's trough, and of its filling.
void Change_pb_Color(wxGauge& bar, const wxColour& colour);
void Change_pb_ForeColor(wxGauge& bar, const wxColour& colour);

/// A form's progress bar and the line below it, which tells the bytes, the rate and the time left.
class ProgressView {
 public:
  /// The range of the bar: fine enough to move smoothly.
  static constexpr int range = 1000;

  /// Makes both in `parent`, as windows of these names.
  ProgressView(wxWindow* parent, const wxString& barName, const wxString& lineName);

  wxGauge* Bar() const { return bar_; }
  wxTextCtrl* Line() const { return line_; }
  void SetLine(const std::string& text);

  void Show(const Progress& progress);
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  wxGauge* bar_;
  wxTextCtrl* line_;
  double position_ = 0;
  bool copying_ = false;
  Clock::time_point started_;
  Clock::time_point lineSet_;
};

}  // namespace slyver
