#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/timer.h>

#include <filesystem>
#include <optional>

#include "desktop/system/Controls.h"
#include "desktop/system/ModernForm.h"
#include "engine/hidden/HideJob.h"

namespace slyver {

/// The hide form: main file, file to hide, password twice, encryption. With encryption the password
/// is a passphrase.
class frmHideFile final : public ModernForm {
 public:
  explicit frmHideFile(FormHost& host);

  void SetFileToHide(const std::filesystem::path& file);

 private:
  void MakeControls();
  void LayOut();
  void Wire();
  void UpdateFilesNote();
  void ShowNote();
  void Text4_KeyPress();
  void Command1_Click();
  void Command2_Click();
  void Command3_Click();
  void CheckIniTim_Timer();
  void tmrDoAll_Timer();
  bool Browse(const char* title, wxTextCtrl& box);
  void RunStep(const std::function<bool()>& step);
  void JobOver();
  HideForm Filled() const;

  wxStaticText* Label1_ = nullptr;
  wxTextCtrl* Text1_ = nullptr;
  wxStaticText* Label4_ = nullptr;
  wxTextCtrl* Text2_ = nullptr;
  wxTextCtrl* note_ = nullptr;  ///< `filesNote_`, or that the password is too long.
  wxString filesNote_;          ///< What hiding does to the files' names and formats.
  std::optional<PasswordNote> passwordNote_;
  wxStaticText* Label2_ = nullptr;
  wxTextCtrl* Text3_ = nullptr;
  wxStaticText* Label3_ = nullptr;
  wxTextCtrl* Text4_ = nullptr;
  wxCheckBox* Check1_ = nullptr;
  wxButton* Command1_ = nullptr;
  wxButton* Command2_ = nullptr;
  wxButton* Command3_ = nullptr;
  wxTimer CheckIniTim_;
  wxTimer tmrDoAll_;
  std::optional<HideJob> job_;
};

}  // namespace slyver
