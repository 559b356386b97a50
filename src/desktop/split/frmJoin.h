#pragma once

#include <wx/timer.h>

#include "desktop/system/ModernForm.h"
#include "desktop/system/ProgressView.h"

namespace slyver {

/// The progress form of a join and of a recovery. Closing it, or Esc, stops the job.
class frmJoin final : public ModernForm {
 public:
  explicit frmJoin(FormHost& host);

  void ShowProgress(const Progress& progress) override;

 private:
  void RefTim_Timer();

  ProgressView view_;
  wxTimer RefTim_;
};

}  // namespace slyver
