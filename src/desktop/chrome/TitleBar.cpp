#include "desktop/chrome/TitleBar.h"

#include <wx/dcbuffer.h>
#include <wx/settings.h>
#include <wx/sizer.h>

#include <cstdlib>
#include <memory>
#include <utility>

#include "desktop/chrome/WindowSystem.h"

namespace slyver {

namespace {

wxString TipOf(CaptionSign sign) {
  switch (sign) {
    case CaptionSign::Minimize:
      return "Minimize Window";
    case CaptionSign::Maximize:
      return "Maximize Window";
    case CaptionSign::Restore:
      return "Restore Window";
    case CaptionSign::Close:
      break;
  }
  return "Close Window";
}

wxString WindowNameOf(CaptionSign sign) {
  switch (sign) {
    case CaptionSign::Minimize:
      return "MinimizeButton";
    case CaptionSign::Maximize:
    case CaptionSign::Restore:
      return "MaximizeButton";
    case CaptionSign::Close:
      break;
  }
  return "CloseButton";
}

}  // namespace

CaptionButton::CaptionButton(wxWindow* parent, const ChromeColours& colours, CaptionSign sign,
                             std::function<void()> clicked)
    : colours_(colours), sign_(sign), clicked_(std::move(clicked)) {
  SetBackgroundStyle(wxBG_STYLE_PAINT);
  Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, WindowNameOf(sign));
  SetAccessibleRole(*this, Role::Button);
  SetSign(sign);
  Bind(wxEVT_PAINT, [this](wxPaintEvent&) { Paint(); });
  Bind(wxEVT_ENTER_WINDOW, [this](wxMouseEvent&) { SetState(ButtonState::Hover); });
  Bind(wxEVT_LEAVE_WINDOW, [this](wxMouseEvent&) { SetState(ButtonState::Normal); });
  Bind(wxEVT_LEFT_DOWN, [this](wxMouseEvent&) { SetState(ButtonState::Pressed); });
  Bind(wxEVT_LEFT_UP, [this](wxMouseEvent&) {
    if (state_ != ButtonState::Pressed) return;
    SetState(ButtonState::Hover);
    clicked_();
  });
}

void CaptionButton::SetSign(CaptionSign sign) {
  sign_ = sign;
  SetToolTip(TipOf(sign));
  SetAccessibleName(*this, TipOf(sign));
  Refresh();
}

void CaptionButton::SetActive(bool active) {
  active_ = active;
  Refresh();
}

void CaptionButton::SetState(ButtonState state) {
  if (state_ == state) return;
  state_ = state;
  Refresh();
}

void CaptionButton::Paint() {
  wxAutoBufferedPaintDC dc(this);
  dc.SetBackground(ButtonColour(colours_, sign_, state_, active_));
  dc.Clear();
  const std::unique_ptr<wxGraphicsContext> context(wxGraphicsContext::Create(dc));
  const bool plain = state_ == ButtonState::Normal && !active_;
  if (context)
    DrawCaptionSign(*context, sign_, GetClientSize(),
                    plain ? colours_.captionInactive : colours_.caption);
}

TitleBar::TitleBar(wxFrame* frame, const ChromeColours& colours, Actions actions)
    : frame_(*frame), colours_(colours), actions_(std::move(actions)) {
  SetBackgroundStyle(wxBG_STYLE_PAINT);
  Create(frame, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, "TitleBar");
  SetAccessibleRole(*this, Role::TitleBar);
  minimize_ =
      new CaptionButton(this, colours_, CaptionSign::Minimize, [this] { actions_.minimize(); });
  maximize_ = new CaptionButton(this, colours_, CaptionSign::Maximize,
                                [this] { actions_.toggleMaximized(); });
  close_ = new CaptionButton(this, colours_, CaptionSign::Close, [this] { actions_.close(); });
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->AddStretchSpacer();
  for (CaptionButton* const button : {minimize_, maximize_, close_})
    row->Add(button, wxSizerFlags().Expand());
  SetSizer(row);
  Remeasure();

  Bind(wxEVT_PAINT, [this](wxPaintEvent&) { Paint(); });
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    Refresh();
    event.Skip();
  });
  Bind(wxEVT_LEFT_DOWN, &TitleBar::LeftDown, this);
  Bind(wxEVT_MOTION, &TitleBar::Motion, this);
  Bind(wxEVT_LEFT_UP, [this](wxMouseEvent&) { pressedAt_ = wxDefaultPosition; });
  Bind(wxEVT_LEFT_DCLICK, [this](wxMouseEvent& event) {
    pressedAt_ = wxDefaultPosition;
    if (!IconArea().Contains(event.GetPosition())) actions_.toggleMaximized();
  });
  Bind(wxEVT_RIGHT_UP, [this](wxMouseEvent& event) { actions_.systemMenu(event.GetPosition()); });
}

void TitleBar::SetIcon(const wxBitmapBundle& icon) {
  icon_ = icon;
  Refresh();
}

void TitleBar::SetCaption(const wxString& caption) {
  caption_ = caption;
  SetAccessibleName(*this, caption);
  Refresh();
}

void TitleBar::SetActive(bool active) {
  active_ = active;
  for (CaptionButton* const button : {minimize_, maximize_, close_}) button->SetActive(active);
  Refresh();
}

void TitleBar::SetResizing(bool allowed, bool maximized) {
  maximize_->SetSign(maximized ? CaptionSign::Restore : CaptionSign::Maximize);
  maximize_->Show(allowed);
  Layout();
}

void TitleBar::Remeasure() {
  for (CaptionButton* const button : {minimize_, maximize_, close_})
    button->SetMinSize({CaptionButtonWidth(*this), TitleBarHeight(*this)});
  SetMinSize({-1, TitleBarHeight(*this)});
}

wxRect TitleBar::IconArea() const {
  const int height = GetClientSize().y;
  const int side = height * 5 / 8;
  return {(height - side) / 2, (height - side) / 2, side, side};
}

void TitleBar::Paint() {
  wxAutoBufferedPaintDC dc(this);
  dc.SetBackground(active_ ? colours_.title : colours_.titleInactive);
  dc.Clear();
  const wxRect iconArea = IconArea();
  if (icon_.IsOk()) {
    const std::unique_ptr<wxGraphicsContext> context(wxGraphicsContext::Create(dc));
    const wxSize pixels = iconArea.GetSize() * GetContentScaleFactor();
    if (context)
      context->DrawBitmap(icon_.GetBitmap(pixels), iconArea.x, iconArea.y, iconArea.width,
                          iconArea.height);
  }
  dc.SetFont(GetFont());
  dc.SetTextForeground(active_ ? colours_.caption : colours_.captionInactive);
  const int left = iconArea.GetRight() + iconArea.x + 1;
  const wxString text = FittingText(dc, caption_, minimize_->GetPosition().x - left - iconArea.x);
  dc.DrawText(text, left, (GetClientSize().y - dc.GetTextExtent(text).y) / 2);
}

void TitleBar::LeftDown(wxMouseEvent& event) {
  if (IconArea().Contains(event.GetPosition()))
    actions_.systemMenu(wxPoint(0, GetClientSize().y));
  else
    pressedAt_ = event.GetPosition();
}

void TitleBar::Motion(wxMouseEvent& event) {
  if (pressedAt_ == wxDefaultPosition || !event.LeftIsDown()) return;
  // A move at the first pixel would break double-clicks of an unsteady hand.
  const wxPoint way = event.GetPosition() - pressedAt_;
  const int threshold = wxSystemSettings::GetMetric(wxSYS_DRAG_X, this);
  if (std::abs(way.x) <= threshold && std::abs(way.y) <= threshold) return;
  pressedAt_ = wxDefaultPosition;
  BeginMove(frame_);
}

}  // namespace slyver
