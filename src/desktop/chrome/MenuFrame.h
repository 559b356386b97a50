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

/// The menu bar of a form, drawn in a window of its own. Menus open by a click, by Alt and their
/// letter, or by F10 and the arrow keys; Esc leaves them.
class MenuFrame final : public wxWindow, private wxEventFilter {
 public:
  /// `closed` is called when a menu that was open is not any more.
  MenuFrame(wxWindow* parent, const wxString& name, std::function<void()> closed);
  ~MenuFrame() override;

  /// Whether one of the menus is open.
  bool IsOpen() const { return open_ != none; }

  void SetMenus(std::vector<BarMenu> menus);

  /// Takes the measures anew after a change of the font.
  void Remeasure();

  /// Where menu number `index` (from 0) opens, in the bar's own coordinates.
  wxPoint PopupXY(std::size_t index) const;

  /// Acts on a key that was pressed anywhere in the form. Returns false when it is none of the
  /// menu bar's.
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
  int hot_ = none;     ///< Under the pointer, or reached by the keyboard.
  int open_ = none;    ///< Whose menu is open.
  bool keys_ = false;  ///< The arrow keys move along the bar.
};

}  // namespace slyver
