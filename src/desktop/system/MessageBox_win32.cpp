#include "desktop/system/MessageBox.h"

#include <wx/msgdlg.h>

#include "desktop/system/WxText.h"

namespace slyver {

bool ShowMessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons) {
  long picture = wxICON_NONE;
  if (icon == Icon::Critical) picture = wxICON_ERROR;
  if (icon == Icon::Information) picture = wxICON_INFORMATION;
  wxMessageDialog box(parent, ToWx(text), "Slyver", buttons | picture);
  const int pressed = box.ShowModal();
  return pressed == wxID_OK || pressed == wxID_YES;
}

}  // namespace slyver
