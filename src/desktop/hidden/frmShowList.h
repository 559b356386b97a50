#pragma once

#include <wx/button.h>
#include <wx/listctrl.h>

#include <vector>

#include "desktop/hidden/ListViewIcon.h"
#include "desktop/system/ModernForm.h"
#include "engine/hidden/Carrier.h"

namespace slyver {

class frmHideRec;

/// The list of hidden files, from which the user chooses one to recover.
class frmShowList final : public ModernForm {
 public:
  frmShowList(FormHost& host, frmHideRec& recover, const std::vector<HiddenFile>& files);

 private:
  void LayOut();
  void GetAllIcons(const std::vector<HiddenFile>& files);
  void WidenNames();
  void ShowWholeName(const wxPoint& pointer);
  void Command1_Click();
  void Command2_Click();

  frmHideRec& recover_;
  IconList ImageList_;
  wxListView* LV1_;
  int nameWidth_ = 0;  ///< The minimum width of the name column, in pixels.
  wxButton* Command1_;
  wxButton* Command2_;
};

}  // namespace slyver
