#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/radiobut.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/timer.h>

#include <cstdint>
#include <memory>

#include "desktop/system/ModernForm.h"
#include "desktop/system/ProgressView.h"
#include "engine/split/SizeArithmetic.h"

namespace slyver {

/// The split form: file, output folder, and piece size in bytes or as a number of pieces.
class frmSplitter final : public ModernForm {
 public:
  explicit frmSplitter(FormHost& host);

  void ShowProgress(const Progress& progress) override;

 private:
  void MakeControls();
  void LayOut();
  void Wire();
  void Form_Load();
  std::uint64_t SourceLength();
  void Text1_Change();
  void Text3_Change();
  void Nofile_Change();
  void ShowCount(const FieldChange& change);
  void ComputeSize();
  void FilterKey(wxKeyEvent& event);
  void OfferSizes();
  void Option1_Click();
  void Option2_Click();
  void Command1_Click();
  void Command2_Click();
  void Command3_Click();
  void Command4_Click();
  void Command5_Click();
  void Command6_Click();
  void tmr_Timer();

  wxStaticText* Label1_ = nullptr;
  wxTextCtrl* Text1_ = nullptr;
  wxButton* Command6_ = nullptr;
  wxStaticText* Label2_ = nullptr;
  wxTextCtrl* Text2_ = nullptr;
  wxButton* Command2_ = nullptr;
  wxStaticBox* Frame1_ = nullptr;
  wxRadioButton* Option1_ = nullptr;
  wxStaticText* Label3_ = nullptr;
  wxRadioButton* Option2_ = nullptr;
  wxTextCtrl* Text3_ = nullptr;
  wxButton* sizes_ = nullptr;  ///< Drops down a menu of sizes for Text3.
  wxStaticText* Label6_ = nullptr;
  wxStaticText* Label5_ = nullptr;
  wxTextCtrl* Nofile_ = nullptr;
  wxCheckBox* Check1_ = nullptr;
  std::unique_ptr<ProgressView> view_;  ///< The bar pb and the line Text4.
  wxButton* Command4_ = nullptr;
  wxButton* Command5_ = nullptr;
  wxButton* Command1_ = nullptr;
  wxButton* Command3_ = nullptr;
  wxTimer tmr_;
  /// The user changed the number of pieces last, so the size is computed from it.
  bool NofileTyping_ = false;
};

}  // namespace slyver
