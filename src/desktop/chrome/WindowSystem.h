#pragma once

#include <wx/frame.h>
#include <wx/gauge.h>
#include <wx/menu.h>
#include <wx/textctrl.h>

#include <functional>
#include <memory>

/// What the window chrome and the forms need of the window system beyond the toolkit.
namespace slyver {

/// The part of a window's border that the user drags to resize it.
enum class Edge { Left, Right, Bottom, BottomLeft, BottomRight };

/// What a screen reader reports a self-drawn control as.
enum class Role { TitleBar, Button, MenuBar, Separator };

/// True if the window system draws a title bar and edges around every window, as some Wayland
/// compositors do.
bool SystemDrawsTitleBars();

/// Allows or forbids resizing and maximizing `frame`, which draws its own border.
void AllowResizing(wxFrame& frame, bool allowed);

/// True if `window` is mapped in its current size, which the toolkit may delay.
bool IsOnScreen(const wxTopLevelWindow& window);

/// Centres `dialog` on its parent, or on the screen without one. Must be called before the dialog
/// is shown or moved.
void CentreOnOwner(wxTopLevelWindow& dialog);

/// Sets the icon of windows without one.
void SetDefaultIcons(const wxIconBundle& icons);

/// Lets the window system move `frame` with the pointer, until the left button is released.
void BeginMove(wxFrame& frame);

/// Lets the window system move `frame` with the arrow keys, until Enter or Esc.
void BeginMoveByKeyboard(wxFrame& frame);

/// Lets the window system resize `frame` with the pointer, until the left button is released.
void BeginResize(wxFrame& frame, Edge edge);

/// Lets the window system resize `frame` with the arrow keys, until Enter or Esc.
void BeginResizeByKeyboard(wxFrame& frame);

/// Sets the name under which screen readers present `control`.
void SetAccessibleName(wxWindow& control, const wxString& name);
wxString GetAccessibleName(const wxWindow& control);
void SetAccessibleRole(wxWindow& control, Role role);

/// Sets the character that a masked text box shows for each one typed.
void SetMaskCharacter(wxTextCtrl& box, wxChar character);

/// Makes Alt and the letter marked in `label` move the focus to `field`.
void SetMnemonicTarget(wxWindow& label, wxWindow& field);

/// Sets the colour of a progress bar's trough.
void SetTroughColour(wxGauge& bar, const wxColour& colour);

/// Sets the colour of a progress bar's filling.
void SetFillingColour(wxGauge& bar, const wxColour& colour);

/// Shows the read-only text of `box` without a frame, on its parent's background.
void ShowAsPlainText(wxTextCtrl& box);

/// Watches keys and the pointer while a pop-up menu is open, for its menu bar.
class PopupWatch {
 public:
  struct Handlers {
    std::function<void(int direction)> sideways;         ///< Left (-1) or right (1) was pressed.
    std::function<void(const wxPoint& screen)> pointer;  ///< The pointer moved.
  };
  /// `selectFirst`: select the first item, as for a menu opened by keyboard. At most one watch may
  /// exist at a time.
  PopupWatch(wxMenu& menu, bool selectFirst, Handlers handlers);
  ~PopupWatch();
  PopupWatch(const PopupWatch&) = delete;
  PopupWatch& operator=(const PopupWatch&) = delete;

  /// Closes the menu without a choice.
  void Close();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
