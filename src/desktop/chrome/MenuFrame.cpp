#include "desktop/chrome/MenuFrame.h"

#include <wx/control.h>
#include <wx/dcbuffer.h>
#include <wx/settings.h>

#include <cctype>
#include <utility>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/chrome/modWinXP.h"

namespace slyver {

MenuFrame::MenuFrame(wxWindow* parent, const wxString& name, std::function<void()> closed)
    : closed_(std::move(closed)) {
  wxEvtHandler::AddFilter(this);
  SetBackgroundStyle(wxBG_STYLE_PAINT);
  Create(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, name);
  SetAccessibleRole(*this, Role::MenuBar);
  Bind(wxEVT_PAINT, [this](wxPaintEvent&) { Paint(); });
  Bind(wxEVT_MOTION, [this](wxMouseEvent& event) {
    if (!keys_) Select(MenuAt(event.GetPosition()));
  });
  Bind(wxEVT_LEAVE_WINDOW, [this](wxMouseEvent&) {
    if (!keys_) Select(none);
  });
  Bind(wxEVT_LEFT_DOWN, [this](wxMouseEvent& event) { Open(MenuAt(event.GetPosition()), false); });
}

MenuFrame::~MenuFrame() {
  wxEvtHandler::RemoveFilter(this);
}

/// Ends the selection by keyboard on a click anywhere.
int MenuFrame::FilterEvent(wxEvent& event) {
  const wxEventType type = event.GetEventType();
  if (keys_ && (type == wxEVT_LEFT_DOWN || type == wxEVT_RIGHT_DOWN)) LeaveBar();
  return Event_Skip;
}

void MenuFrame::LeaveBar() {
  keys_ = false;
  Select(none);
}

void MenuFrame::SetMenus(std::vector<BarMenu> menus) {
  menus_ = std::move(menus);
  wxString names;
  for (const BarMenu& menu : menus_) {
    if (!names.empty()) names += ", ";
    names += wxControl::RemoveMnemonics(menu.title);
  }
  SetAccessibleName(*this, "Menus: " + names);
  Remeasure();
  Refresh();
}

void MenuFrame::Remeasure() {
  SetMinSize({-1, GetCharHeight() + 2 * MenuTitlePadding(*this).y});
}

wxRect MenuFrame::TitleArea(std::size_t index) const {
  const wxSize padding = MenuTitlePadding(*this);
  int left = 0;
  for (std::size_t i = 0; i < menus_.size(); ++i) {
    const wxString text = wxControl::RemoveMnemonics(menus_[i].title);
    const int width = GetTextExtent(text).x + 2 * padding.x;
    if (i == index) return {left, 0, width, GetClientSize().y};
    left += width;
  }
  return {};
}

wxPoint MenuFrame::PopupXY(std::size_t index) const {
  const wxRect area = TitleArea(index);
  return {area.x, area.y + area.height};
}

int MenuFrame::MenuAt(const wxPoint& position) const {
  for (std::size_t i = 0; i < menus_.size(); ++i)
    if (TitleArea(i).Contains(position)) return static_cast<int>(i);
  return none;
}

int MenuFrame::Neighbour(int index, int direction) const {
  const int count = static_cast<int>(menus_.size());
  return (index + direction + count) % count;
}

int MenuFrame::MenuOfLetter(int letter) const {
  for (std::size_t i = 0; i < menus_.size(); ++i) {
    const wxString& title = menus_[i].title;
    const std::size_t mark = title.find('&');
    if (mark != wxString::npos && mark + 1 < title.size() &&
        std::toupper(static_cast<int>(title[mark + 1].GetValue())) == letter)
      return static_cast<int>(i);
  }
  return none;
}

void MenuFrame::Select(int index) {
  if (hot_ == index) return;
  hot_ = index;
  Refresh();
}

void MenuFrame::Open(int index, bool byKeyboard) {
  if (!IsEnabled() || open_ != none) return;
  keys_ = false;
  while (index != none) {
    open_ = hot_ = index;
    Refresh();
    Update();
    int next = none;
    const BarMenu& bar = menus_[static_cast<std::size_t>(index)];
    {
      PopupWatch watch(*bar.menu, byKeyboard,
                       {[&](int direction) {
                          next = Neighbour(index, direction);
                          byKeyboard = true;
                          watch.Close();
                        },
                        [&](const wxPoint& screen) {
                          const int under = MenuAt(ScreenToClient(screen));
                          if (under == none || under == index) return;
                          next = under;
                          byKeyboard = false;
                          watch.Close();
                        }});
      PopupMenu(bar.menu, PopupXY(static_cast<std::size_t>(index)));
    }
    index = next;
  }
  open_ = none;
  closed_();
  Select(MenuAt(ScreenToClient(wxGetMousePosition())));
  Refresh();
}

bool MenuFrame::TakeKeyWhileSelected(int key) {
  switch (key) {
    case WXK_LEFT:
      Select(Neighbour(hot_, -1));
      return true;
    case WXK_RIGHT:
      Select(Neighbour(hot_, 1));
      return true;
    case WXK_DOWN:
    case WXK_RETURN:
    case WXK_NUMPAD_ENTER:
    case WXK_SPACE:
      Open(hot_, true);
      return true;
    default:
      break;
  }
  // Any other key leaves the bar; Esc and F10 do nothing else.
  const int letter = MenuOfLetter(key);
  LeaveBar();
  if (letter != none) Open(letter, true);
  return letter != none || key == WXK_ESCAPE || key == WXK_F10;
}

bool MenuFrame::TakeKey(const wxKeyEvent& event) {
  if (!IsEnabled() || menus_.empty()) return false;
  const int key = event.GetKeyCode();
  if (keys_ && event.GetModifiers() == wxMOD_NONE) return TakeKeyWhileSelected(key);
  if (key == WXK_F10 && event.GetModifiers() == wxMOD_NONE) {
    keys_ = true;
    Select(0);
    return true;
  }
  const int letter = event.GetModifiers() == wxMOD_ALT ? MenuOfLetter(key) : none;
  if (letter == none) return false;
  Open(letter, true);
  return true;
}

void MenuFrame::Paint() {
  wxAutoBufferedPaintDC dc(this);
  dc.SetBackground(wxSystemSettings::GetColour(wxSYS_COLOUR_MENUBAR));
  dc.Clear();
  dc.SetFont(GetFont());
  for (std::size_t i = 0; i < menus_.size(); ++i) {
    const wxRect area = TitleArea(i);
    const bool selected = static_cast<int>(i) == (open_ == none ? hot_ : open_);
    if (selected) {
      dc.SetPen(*wxTRANSPARENT_PEN);
      dc.SetBrush(wxSystemSettings::GetColour(wxSYS_COLOUR_HIGHLIGHT));
      dc.DrawRectangle(area);
    }
    dc.SetTextForeground(wxSystemSettings::GetColour(!IsEnabled() ? wxSYS_COLOUR_GRAYTEXT
                                                     : selected   ? wxSYS_COLOUR_HIGHLIGHTTEXT
                                                                  : wxSYS_COLOUR_MENUTEXT));
    const wxString& title = menus_[i].title;
    const std::size_t mark = title.find('&');
    dc.DrawLabel(wxControl::RemoveMnemonics(title), wxNullBitmap, area, wxALIGN_CENTRE,
                 keys_ && mark != wxString::npos ? static_cast<int>(mark) : none);
  }
}

}  // namespace slyver
