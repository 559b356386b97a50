#pragma once

#include <wx/button.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/weakref.h>

#include <filesystem>
#include <optional>

#include "desktop/system/Controls.h"
#include "desktop/system/ModernForm.h"
#include "engine/hidden/RecoverJob.h"

namespace slyver {

class frmShowList;

/// The recover form: a carrier and its password.
class frmHideRec final : public ModernForm {
 public:
  explicit frmHideRec(FormHost& host);

  /// Recovers file number `k` of the list, from 1.
  void DorestOfStuff(int k);

  /// Shows this form again after the list was cancelled.
  void ListCancelled();

 private:
  void MakeControls();
  void LayOut();
  void Wire();
  void Text1_Change();
  void ShowNote();
  void Command1_Click();
  void Command2_Click();
  void Command3_Click();
  void Command4_Click();
  void Run(const std::function<RecoverJob::Next()>& procedure);
  void Start(RecoverJob::Next (RecoverJob::*procedure)());

  wxStaticText* Label1_ = nullptr;
  wxTextCtrl* Text1_ = nullptr;
  wxButton* Command3_ = nullptr;
  wxStaticText* Label2_ = nullptr;
  wxTextCtrl* Text2_ = nullptr;
  wxTextCtrl* note_ = nullptr;
  std::optional<PasswordNote> passwordNote_;
  SecretKind kind_ = SecretKind::Password;  ///< What Text2 holds.
  wxButton* Command1_ = nullptr;
  wxButton* Command4_ = nullptr;
  wxButton* Command2_ = nullptr;
  std::optional<RecoverJob> job_;
  wxWeakRef<frmShowList> list_;
};

}  // namespace slyver
