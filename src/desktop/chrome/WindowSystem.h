#pragma once

#include <wx/frame.h>
#include <wx/gauge.h>
#include <wx/menu.h>
#include <wx/textctrl.h>

#include <functional>
#include <memory>

/// What the window chrome and the forms need of the window system beyond the toolkit.
namespace slyver {

/// Where a window is taken hold of to resize it.
enum class Edge { Left, Right, Bottom, BottomLeft, BottomRight };

/// What a control that draws itself is to a screen reader.
enum class Role { TitleBar, Button, MenuBar, Separator };

/// Whether the window system puts a title bar and edges of its own around every window, as some
/// Wayland compositors do.
bool SystemDrawsTitleBars();

/// Tells the window system whether `frame`, which draws its own border, may be resized and
/// maximized beside all else that can be done with a window.
void AllowResizing(wxFrame& frame, bool allowed);

/// Whether the window system has been given `window` to show, in its present size, which the
/// toolkit may put off.
bool IsOnScreen(const wxTopLevelWindow& window);

/// Lets `dialog` appear in the middle of the window that it belongs to, wherever that is by then,
/// or of the screen. To be called before the dialog is shown or moved.
void CentreOnOwner(wxTopLevelWindow& dialog);

/// The icon of windows that are given none.
void SetDefaultIcons(const wxIconBundle& icons);

/// Lets the window system move `frame` with the pointer, whose left button is down, until the
/// button is let go.
void BeginMove(wxFrame& frame);

/// Lets the window system move `frame` with the arrow keys, until Enter or Esc.
void BeginMoveByKeyboard(wxFrame& frame);

/// As the two above, but resizes `frame`.
void BeginResize(wxFrame& frame, Edge edge);
void BeginResizeByKeyboard(wxFrame& frame);

/// The name under which screen readers present `control`.
void SetAccessibleName(wxWindow& control, const wxString& name);
wxString GetAccessibleName(const wxWindow& control);
void SetAccessibleRole(wxWindow& control, Role role);

/// Shows `character` for each one typed into a masked text box.
void SetMaskCharacter(wxTextCtrl& box, wxChar character);

/// The letter marked in `label`, together with Alt, leads to `field`.
void SetMnemonicTarget(wxWindow& label, wxWindow& field);

/// The colour of a progress bar's trough, and of its filling.
void SetTroughColour(wxGauge& bar, const wxColour& colour);
void SetFillingColour(wxGauge& bar, const wxColour& colour);

/// Shows the read-only text of `box` without a frame, on the background that it stands on.
void ShowAsPlainText(wxTextCtrl& box);

/// Watches a pop-up menu, while it is open, for what its menu bar acts on.
class PopupWatch {
 public:
  struct Handlers {
    std::function<void(int direction)> sideways;         ///< Left (-1) or right (1) was pressed.
    std::function<void(const wxPoint& screen)> pointer;  ///< The pointer moved.
  };
  /// `selectFirst`: the menu opens with its first item selected, as menus opened by keyboard do.
  /// One watch at most may exist.
  PopupWatch(wxMenu& menu, bool selectFirst, Handlers handlers);
  ~PopupWatch();
  PopupWatch(const PopupWatch&) = delete;
  PopupWatch& operator=(const PopupWatch&) = delete;

  /// Closes the menu; nothing is chosen.
  void Close();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
