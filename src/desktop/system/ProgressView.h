#pragma once

#include <wx/gauge.h>
#include <wx/textctrl.h>

#include <chrono>
#include <string>

#include "engine/talk/Ui.h"

namespace slyver {

/// Returns a bar's position, 0 to 100, for `progress`, after position `before`. While bytes are
/// copied, it is their share. Otherwise it is the value set, which never goes back, except to 0.
double BarPosition(const Progress& progress, double before);

/// Sets the colour of a progress bar's trough.
void Change_pb_Color(wxGauge& bar, const wxColour& colour);

/// Sets the colour of a progress bar's filling.
void Change_pb_ForeColor(wxGauge& bar, const wxColour& colour);

/// A form's progress bar and the line with bytes, rate and time left.
class ProgressView {
 public:
  /// The bar's range, fine enough for smooth motion.
  static constexpr int range = 1000;

  /// Creates both in `parent`, as windows of these names.
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
