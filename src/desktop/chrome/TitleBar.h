#pragma once

#include <wx/bmpbndl.h>
#include <wx/frame.h>
#include <wx/window.h>

#include <array>
#include <functional>

#include "desktop/chrome/modWinXP.h"

namespace slyver {

/// A button of the title bar that never takes the keyboard focus.
class CaptionButton final : public wxWindow {
 public:
  CaptionButton(wxWindow* parent, const ChromeColours& colours, CaptionSign sign,
                std::function<void()> clicked);

  /// Changes the button's sign, tool tip and accessible name.
  void SetSign(CaptionSign sign);
  void SetActive(bool active);
  bool AcceptsFocus() const override { return false; }

 private:
  void Paint();
  void SetState(ButtonState state);

  const ChromeColours& colours_;
  CaptionSign sign_;
  std::function<void()> clicked_;
  ButtonState state_ = ButtonState::Normal;
  bool active_ = true;
};

/// The title bar of a form: icon, caption and caption buttons. Dragging it moves the form; a
/// double-click maximizes it.
class TitleBar final : public wxWindow {
 public:
  struct Actions {
    std::function<void()> minimize;
    std::function<void()> toggleMaximized;  ///< Also on a double-click.
    std::function<void()> close;
    std::function<void(const wxPoint&)> systemMenu;  ///< Takes a point of the title bar.
  };
  TitleBar(wxFrame* frame, const ChromeColours& colours, Actions actions);

  void SetIcon(const wxBitmapBundle& icon);
  void SetCaption(const wxString& caption);
  void SetActive(bool active);
  /// Shows the maximize or restore button, or none if the form may not be resized.
  void SetResizing(bool allowed, bool maximized);
  /// Measures the bar again after a change of the font.
  void Remeasure();
  bool AcceptsFocus() const override { return false; }

 private:
  void Paint();
  void LeftDown(wxMouseEvent& event);
  void Motion(wxMouseEvent& event);
  wxRect IconArea() const;

  wxFrame& frame_;
  const ChromeColours& colours_;
  Actions actions_;
  wxBitmapBundle icon_;
  wxString caption_;
  CaptionButton* minimize_;
  CaptionButton* maximize_;
  CaptionButton* close_;
  wxPoint pressedAt_ = wxDefaultPosition;
  bool active_ = true;
};

}  // namespace slyver
