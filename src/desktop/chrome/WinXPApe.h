#pragma once

#include <wx/bmpbndl.h>
#include <wx/frame.h>
#include <wx/panel.h>

#include <vector>

#include "desktop/chrome/MenuFrame.h"
#include "desktop/chrome/ResizeEdge.h"
#include "desktop/chrome/TitleBar.h"
#include "desktop/chrome/modWinXP.h"

namespace slyver {

/// The window chrome of a form: title bar, menu bar and edges around the area for the controls.
/// The window system moves, resizes, maximizes and minimizes. If it draws title bars and edges
/// itself, the form has none of its own.
class WinXPApe {
 public:
  /// The style of a frame with this chrome.
  static constexpr long fixedStyle = wxBORDER_NONE | wxMINIMIZE_BOX | wxCLOSE_BOX | wxSYSTEM_MENU |
                                     wxTAB_TRAVERSAL | wxCLIP_CHILDREN;
  /// The same, for a frame that may be resized and maximized.
  static constexpr long resizableStyle = fixedStyle | wxRESIZE_BORDER | wxMAXIMIZE_BOX;

  /// Builds the chrome in `form`, which must have one of the two styles and outlive this object.
  void XP_FormLoad(wxFrame& form, std::vector<BarMenu> menus);

  /// Returns the area for the form's controls.
  wxPanel* ClientArea() const { return clientArea_; }

  /// True if the form may be resized and maximized.
  bool ResizeCapable() const { return resizeCapable_; }
  void ResizeCapable(bool allowed);

  void RefreshCaption();  ///< Must be called after a change of the frame's title.
  void RefreshIcon(const wxBitmapBundle& icon);
  void RefreshTitleBar();  ///< Must be called after a change of the frame's state.
  void ResizeControl();    ///< Lays out the chrome again.
  void UpdateMenuBar(std::vector<BarMenu> menus);

  /// Sets the font of the title bar, if `face` is installed.
  void FontProperties(const wxString& face);

  /// Sets the colours of the title bar while the window is active and inactive.
  void TitleBarColor(const wxColour& active, const wxColour& inactive);

  /// Returns where menu number `index` (from 0) opens, in coordinates of the menu bar.
  wxPoint PopupXY(std::size_t index) const { return picMnuFrame_->PopupXY(index); }

  void EnableMenus(bool enable);

 private:
  void TakeKey(wxKeyEvent& event);
  void ShowSystemMenu(const wxPoint& position);
  void ToggleMaximized();
  void ShowActive(bool active);
  void ColourEdges();

  wxFrame* form_ = nullptr;
  ChromeColours colours_ = DefaultChromeColours();
  bool resizeCapable_ = false;
  bool active_ = true;
  bool maximized_ = false;
  TitleBar* titleBar_ = nullptr;
  MenuFrame* picMnuFrame_ = nullptr;
  ResizeEdge* pEdgesL_ = nullptr;
  ResizeEdge* pEdgesR_ = nullptr;
  ResizeEdge* pEdgesB_ = nullptr;
  wxPanel* clientArea_ = nullptr;
};

}  // namespace slyver
