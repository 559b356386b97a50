#include "desktop/chrome/modWinXP.h"

#include <wx/control.h>
#include <wx/dc.h>

#include <algorithm>

namespace slyver {

ChromeColours DefaultChromeColours() {
  return {.title = wxColour(38, 70, 83),
          .titleInactive = wxColour(94, 107, 114),
          .caption = wxColour(255, 255, 255),
          .captionInactive = wxColour(233, 237, 239),
          .hover = wxColour(66, 104, 119),
          .pressed = wxColour(24, 48, 58),
          .closeHover = wxColour(196, 57, 43),
          .closePressed = wxColour(146, 36, 26)};
}

int TitleBarHeight(const wxWindow& window) {
  return window.GetCharHeight() * 2;
}
int CaptionButtonWidth(const wxWindow& window) {
  return window.GetCharHeight() * 5 / 2;
}
int EdgeWidth(const wxWindow& window) {
  return std::max(3, window.GetCharHeight() / 4);
}
wxSize MenuTitlePadding(const wxWindow& window) {
  return {window.GetCharHeight() * 2 / 3, window.GetCharHeight() / 4};
}

wxColour ButtonColour(const ChromeColours& colours, CaptionSign sign, ButtonState state,
                      bool active) {
  const bool close = sign == CaptionSign::Close;
  switch (state) {
    case ButtonState::Hover:
      return close ? colours.closeHover : colours.hover;
    case ButtonState::Pressed:
      return close ? colours.closePressed : colours.pressed;
    case ButtonState::Normal:
      break;
  }
  return active ? colours.title : colours.titleInactive;
}

void DrawCaptionSign(wxGraphicsContext& context, CaptionSign sign, const wxSize& size,
                     const wxColour& colour) {
  // Lines are sharp in the middle of pixels, hence the half.
  const int side = std::max(8, size.y / 3);
  const wxSize margin = (size - wxSize(side, side)) / 2;
  const double left = margin.x + 0.5;
  const double top = margin.y + 0.5;
  const int pen = std::max(1, side / 9);
  context.SetPen(context.CreatePen(wxGraphicsPenInfo(colour).Width(pen)));
  context.SetBrush(*wxTRANSPARENT_BRUSH);
  switch (sign) {
    case CaptionSign::Minimize:
      context.StrokeLine(left, top + side, left + side, top + side);
      break;
    case CaptionSign::Maximize:
      context.DrawRectangle(left, top, side, side);
      break;
    case CaptionSign::Restore: {
      const int shift = std::max(2, side / 4);
      context.DrawRectangle(left, top + shift, side - shift, side - shift);
      context.StrokeLine(left + shift, top, left + side, top);
      context.StrokeLine(left + side, top, left + side, top + side - shift);
      break;
    }
    case CaptionSign::Close:
      context.StrokeLine(left, top, left + side, top + side);
      context.StrokeLine(left, top + side, left + side, top);
      break;
  }
}

wxIconBundle IconsOf(const wxBitmapBundle& icon) {
  wxIconBundle icons;
  for (const int side : {16, 24, 32, 48, 64, 128})
    if (icon.IsOk()) icons.AddIcon(icon.GetIcon(wxSize(side, side)));
  return icons;
}

wxString FittingText(wxDC& dc, const wxString& text, int width) {
  return wxControl::Ellipsize(text, dc, wxELLIPSIZE_END, width);
}

}  // namespace slyver
