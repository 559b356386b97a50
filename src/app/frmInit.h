#pragma once

#include "app/ModernForm.h"

namespace slyver {

/// The form that is shown while the hide form prepares itself.
class frmInit final : public ModernForm {
 public:
  explicit frmInit(Desktop& desktop);
};

}  // namespace slyver
