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

/// The window chrome of a form: a title bar, a menu bar and edges that are drawn by the program,
/// around the area for the form's controls. What is done with the window, moving, resizing,
/// maximizing and minimizing, is left to the window system. Where that draws title bar and edges
/// itself, the form has none of its own.
class WinXPApe {
 public:
  /// The style of a frame that is to get this chrome.
  static constexpr long fixedStyle = wxBORDER_NONE | wxMINIMIZE_BOX | wxCLOSE_BOX | wxSYSTEM_MENU |
                                     wxTAB_TRAVERSAL | wxCLIP_CHILDREN;
  /// The style of one that may also be resized and maximized.
  static constexpr long resizableStyle = fixedStyle | wxRESIZE_BORDER | wxMAXIMIZE_BOX;

  /// Builds the chrome in `form`, which must have been made with one of the two styles and live as
  /// long as this object is used. The caption is the frame's own.
  void XP_FormLoad(wxFrame& form, std::vector<BarMenu> menus);

  /// The area for the form's controls.
  wxPanel* ClientArea() const { return clientArea_; }

  /// Whether the form may be resized and maximized.
  bool ResizeCapable() const { return resizeCapable_; }
  void ResizeCapable(bool allowed);

  void RefreshCaption();  ///< After a change of the frame's title.
  void RefreshIcon(const wxBitmapBundle& icon);
  void RefreshTitleBar();  ///< After a change of the frame's state.
  void ResizeControl();    ///< Lays the parts of the chrome out anew.
  void UpdateMenuBar(std::vector<BarMenu> menus);

  /// The font of the title bar: `face` if there is such a font, else the one it has.
  void FontProperties(const wxString& face);

  /// The colours of the title bar of the active window and of any other.
  void TitleBarColor(const wxColour& active, const wxColour& inactive);

  /// Where menu number `index` (from 0) opens, in coordinates of the menu bar.
  wxPoint PopupXY(std::size_t index) const { return picMnuFrame_->PopupXY(index); }

  /// Turns the menus on or off.
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
