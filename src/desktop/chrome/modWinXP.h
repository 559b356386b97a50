#pragma once

#include <wx/bmpbndl.h>
#include <wx/colour.h>
#include <wx/graphics.h>
#include <wx/iconbndl.h>
#include <wx/window.h>

/// The looks of the window chrome: its colours, its measures and its shapes.
namespace slyver {

struct ChromeColours {
  wxColour title;          ///< The title bar and the frame of the active window.
  wxColour titleInactive;  ///< The same of any other window.
  wxColour caption;        ///< Text and signs of the title bar.
  wxColour captionInactive;
  wxColour hover;  ///< A caption button under the pointer.
  wxColour pressed;
  wxColour closeHover;
  wxColour closePressed;
};

ChromeColours DefaultChromeColours();

enum class CaptionSign { Minimize, Maximize, Restore, Close };
enum class ButtonState { Normal, Hover, Pressed };

/// Measures in pixels, derived from the font of `window`.
int TitleBarHeight(const wxWindow& window);
int CaptionButtonWidth(const wxWindow& window);
int EdgeWidth(const wxWindow& window);
wxSize MenuTitlePadding(const wxWindow& window);

/// Returns the background of a caption button.
wxColour ButtonColour(const ChromeColours& colours, CaptionSign sign, ButtonState state,
                      bool active);

/// Draws the sign of a caption button in the middle of an area of `size`.
void DrawCaptionSign(wxGraphicsContext& context, CaptionSign sign, const wxSize& size,
                     const wxColour& colour);

/// Returns `icon` in the sizes that window systems show; empty if `icon` is.
wxIconBundle IconsOf(const wxBitmapBundle& icon);

/// Returns `text` cut to `width` pixels, with an ellipsis if it was cut.
wxString FittingText(wxDC& dc, const wxString& text, int width);

}  // namespace slyver
