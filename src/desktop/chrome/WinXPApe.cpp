#include "desktop/chrome/WinXPApe.h"

#include <wx/fontenum.h>
#include <wx/menu.h>
#include <wx/sizer.h>

#include <utility>

#include "desktop/chrome/WindowSystem.h"

namespace slyver {

void WinXPApe::XP_FormLoad(wxFrame& form, std::vector<BarMenu> menus) {
  form_ = &form;
  // Created first, so that Tab starts with the controls.
  clientArea_ =
      new wxPanel(form_, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "ClientArea");
  titleBar_ = new TitleBar(
      form_, colours_,
      {[this] { form_->Iconize(); }, [this] { ToggleMaximized(); }, [this] { form_->Close(); },
       [this](const wxPoint& position) { ShowSystemMenu(position); }});
  picMnuFrame_ = new MenuFrame(form_, "picMnuFrame", [this] { ShowActive(form_->IsActive()); });
  pEdgesL_ = new ResizeEdge(form_, Edge::Left, "pEdgesL");
  pEdgesR_ = new ResizeEdge(form_, Edge::Right, "pEdgesR");
  pEdgesB_ = new ResizeEdge(form_, Edge::Bottom, "pEdgesB");

  auto* const middle = new wxBoxSizer(wxVERTICAL);
  middle->Add(picMnuFrame_, wxSizerFlags().Expand());
  middle->Add(clientArea_, wxSizerFlags(1).Expand());
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(pEdgesL_, wxSizerFlags().Expand());
  row->Add(middle, wxSizerFlags(1).Expand());
  row->Add(pEdgesR_, wxSizerFlags().Expand());
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(titleBar_, wxSizerFlags().Expand());
  column->Add(row, wxSizerFlags(1).Expand());
  column->Add(pEdgesB_, wxSizerFlags().Expand());
  form_->SetSizer(column);

  RefreshCaption();
  UpdateMenuBar(std::move(menus));
  ResizeCapable(form_->HasFlag(wxRESIZE_BORDER));
  const ChromeColours standard = DefaultChromeColours();
  TitleBarColor(standard.title, standard.titleInactive);

  form_->Bind(wxEVT_ACTIVATE, [this](wxActivateEvent& event) {
    // An open menu takes the focus, but the form stays active for the user.
    ShowActive(event.GetActive() || picMnuFrame_->IsOpen());
    event.Skip();
  });
  form_->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    if (form_->IsMaximized() != maximized_) RefreshTitleBar();
  });
  form_->Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) { TakeKey(event); });
}

void WinXPApe::ResizeCapable(bool allowed) {
  resizeCapable_ = allowed;
  AllowResizing(*form_, allowed);
  RefreshTitleBar();
}

void WinXPApe::RefreshCaption() {
  titleBar_->SetCaption(form_->GetTitle());
}

void WinXPApe::RefreshIcon(const wxBitmapBundle& icon) {
  form_->SetIcons(IconsOf(icon));
  titleBar_->SetIcon(icon);
}

void WinXPApe::RefreshTitleBar() {
  maximized_ = form_->IsMaximized();
  titleBar_->SetResizing(resizeCapable_, maximized_);
  const bool ours = !SystemDrawsTitleBars();
  titleBar_->Show(ours);
  for (ResizeEdge* const edge : {pEdgesL_, pEdgesR_, pEdgesB_}) {
    edge->SetResizing(resizeCapable_ && !maximized_);
    edge->Show(ours && !maximized_);
  }
  ResizeControl();
}

void WinXPApe::ResizeControl() {
  form_->Layout();
}

void WinXPApe::UpdateMenuBar(std::vector<BarMenu> menus) {
  picMnuFrame_->Show(!menus.empty());
  picMnuFrame_->SetMenus(std::move(menus));
  ResizeControl();
}

void WinXPApe::FontProperties(const wxString& face) {
  if (!wxFontEnumerator::IsValidFacename(face)) return;
  wxFont font = titleBar_->GetFont();
  font.SetFaceName(face);
  titleBar_->SetFont(font);
  titleBar_->Remeasure();
  ResizeControl();
  titleBar_->Refresh();
}

void WinXPApe::TitleBarColor(const wxColour& active, const wxColour& inactive) {
  colours_.title = active;
  colours_.titleInactive = inactive;
  titleBar_->SetActive(active_);
  ColourEdges();
}

void WinXPApe::EnableMenus(bool enable) {
  picMnuFrame_->Enable(enable);
  picMnuFrame_->Refresh();
}

void WinXPApe::ShowActive(bool active) {
  active_ = active;
  titleBar_->SetActive(active_);
  ColourEdges();
}

void WinXPApe::ColourEdges() {
  for (ResizeEdge* const edge : {pEdgesL_, pEdgesR_, pEdgesB_}) {
    edge->SetBackgroundColour(active_ ? colours_.title : colours_.titleInactive);
    edge->Refresh();
  }
}

void WinXPApe::ToggleMaximized() {
  if (resizeCapable_) form_->Maximize(!form_->IsMaximized());
}

void WinXPApe::TakeKey(wxKeyEvent& event) {
  if (picMnuFrame_->TakeKey(event)) return;
  // Window managers usually take these two keys first.
  const bool alt = event.GetModifiers() == wxMOD_ALT;
  if (alt && event.GetKeyCode() == WXK_SPACE)
    ShowSystemMenu(picMnuFrame_->GetPosition());
  else if (alt && event.GetKeyCode() == WXK_F4)
    form_->Close();
  else
    event.Skip();
}

void WinXPApe::ShowSystemMenu(const wxPoint& position) {
  enum Command { Restore = 1, Move, Size, Minimize, Maximize, CloseForm };
  const bool maximized = form_->IsMaximized();
  wxMenu menu;
  menu.Append(Restore, "&Restore")->Enable(maximized);
  menu.Append(Move, "&Move")->Enable(!maximized);
  menu.Append(Size, "&Size")->Enable(resizeCapable_ && !maximized);
  menu.Append(Minimize, "Mi&nimize");
  menu.Append(Maximize, "Ma&ximize")->Enable(resizeCapable_ && !maximized);
  menu.AppendSeparator();
  menu.Append(CloseForm, "&Close\tAlt+F4");
  switch (form_->GetPopupMenuSelectionFromUser(menu, position)) {
    case Restore:
    case Maximize:
      ToggleMaximized();
      break;
    case Move:
      BeginMoveByKeyboard(*form_);
      break;
    case Size:
      BeginResizeByKeyboard(*form_);
      break;
    case Minimize:
      form_->Iconize();
      break;
    case CloseForm:
      form_->Close();
      break;
    default:
      break;
  }
}

}  // namespace slyver
