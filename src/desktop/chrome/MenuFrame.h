#pragma once

#include <wx/eventfilter.h>
#include <wx/menu.h>
#include <wx/window.h>

#include <functional>
#include <vector>

namespace slyver {

/// A menu of the menu bar.
struct BarMenu {
  wxString title;  ///< With "&" before the letter that opens it together with Alt.
  wxMenu* menu = nullptr;
};

/// The menu bar of a form. Menus open by a click, Alt and a letter, or F10 and the arrow keys; Esc
/// closes them.
class MenuFrame final : public wxWindow, private wxEventFilter {
 public:
  /// `closed` is called after a menu has closed.
  MenuFrame(wxWindow* parent, const wxString& name, std::function<void()> closed);
  ~MenuFrame() override;

  /// True if a menu is open.
  bool IsOpen() const { return open_ != none; }

  void SetMenus(std::vector<BarMenu> menus);

  /// Measures the bar again after a change of the font.
  void Remeasure();

  /// Returns where menu number `index` (from 0) opens, in the bar's coordinates.
  wxPoint PopupXY(std::size_t index) const;

  /// Handles a key pressed anywhere in the form. Returns `false` if the menu bar does not use it.
  bool TakeKey(const wxKeyEvent& event);

  bool AcceptsFocus() const override { return false; }

 private:
  static constexpr int none = -1;

  wxRect TitleArea(std::size_t index) const;
  int MenuAt(const wxPoint& position) const;
  int Neighbour(int index, int direction) const;
  int MenuOfLetter(int letter) const;
  void Select(int index);
  void Open(int index, bool byKeyboard);
  bool TakeKeyWhileSelected(int key);
  void LeaveBar();
  int FilterEvent(wxEvent& event) override;
  void Paint();

  std::function<void()> closed_;
  std::vector<BarMenu> menus_;
  int hot_ = none;     ///< The title under the pointer or selected by keyboard.
  int open_ = none;    ///< The title whose menu is open.
  bool keys_ = false;  ///< The arrow keys move along the bar.
};

}  // namespace slyver
