#pragma once

#include <wx/gauge.h>
#include <wx/textctrl.h>

#include "app/ModernForm.h"
#include "app/ProgressView.h"

namespace slyver {

/// The form that is shown while a file is being hidden. Closing it, or Esc, stops the job.
class frmInit final : public ModernForm {
 public:
  explicit frmInit(Desktop& desktop);

  void ShowProgress(const Progress& progress) override;

 private:
  wxGauge* bar_;
  wxTextCtrl* line_;
  ProgressView view_;
};

}  // namespace slyver
