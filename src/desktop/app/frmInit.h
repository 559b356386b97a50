#pragma once

#include "desktop/system/ModernForm.h"
#include "desktop/system/ProgressView.h"

namespace slyver {

/// The wait form of a hide job. Closing it, or Esc, stops the job.
class frmInit final : public ModernForm {
 public:
  explicit frmInit(FormHost& host);

  void ShowProgress(const Progress& progress) override;

 private:
  ProgressView view_;
};

}  // namespace slyver
