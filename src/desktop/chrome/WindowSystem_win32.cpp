#include "desktop/chrome/WindowSystem.h"

#include <wx/access.h>
#include <wx/msw/wrapcctl.h>

#include <oleacc.h>
#include <uxtheme.h>

#include <utility>

namespace slyver {

namespace {

HWND WindowOf(const wxWindow& window) {
  return window.GetHandle();
}

/// Reports a control's name and role to screen readers; the rest is the system's default.
class Accessible final : public wxAccessible {
 public:
  explicit Accessible(wxWindow* control) : wxAccessible(control) {}

  wxAccStatus GetName(int childId, wxString* name) override {
    if (childId != wxACC_SELF || name_.empty()) return wxACC_NOT_IMPLEMENTED;
    *name = name_;
    return wxACC_OK;
  }
  wxAccStatus GetRole(int childId, wxAccRole* role) override {
    if (childId != wxACC_SELF || role_ == wxROLE_NONE) return wxACC_NOT_IMPLEMENTED;
    *role = role_;
    return wxACC_OK;
  }

  void SetName(const wxString& name) { name_ = name; }
  void SetRole(wxAccRole role) { role_ = role; }

 private:
  wxString name_;
  wxAccRole role_ = wxROLE_NONE;
};

Accessible& AccessibleOf(wxWindow& control) {
  if (auto* const known = dynamic_cast<Accessible*>(control.GetAccessible())) return *known;
  auto* const made = new Accessible(&control);
  control.SetAccessible(made);
  return *made;
}

wxAccRole RoleOf(Role role) {
  switch (role) {
    case Role::TitleBar:
      return wxROLE_SYSTEM_TITLEBAR;
    case Role::Button:
      return wxROLE_SYSTEM_PUSHBUTTON;
    case Role::MenuBar:
      return wxROLE_SYSTEM_MENUBAR;
    case Role::Separator:
      break;
  }
  return wxROLE_SYSTEM_SEPARATOR;
}

WPARAM SideOf(Edge edge) {
  switch (edge) {
    case Edge::Left:
      return WMSZ_LEFT;
    case Edge::Right:
      return WMSZ_RIGHT;
    case Edge::Bottom:
      return WMSZ_BOTTOM;
    case Edge::BottomLeft:
      return WMSZ_BOTTOMLEFT;
    case Edge::BottomRight:
      break;
  }
  return WMSZ_BOTTOMRIGHT;
}

void Command(const wxFrame& frame, WPARAM command) {
  // A captured pointer would not reach the system's move loop.
  (void)ReleaseCapture();
  (void)PostMessageW(WindowOf(frame), WM_SYSCOMMAND, command, 0);
}

MONITORINFO MonitorOf(HWND window) {
  MONITORINFO monitor = {};
  monitor.cbSize = sizeof monitor;
  (void)GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
  return monitor;
}

/// Hides the system's border, which the window has only to be resizable, and keeps a maximized
/// window off the task bar.
LRESULT CALLBACK WithoutBorder(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                               DWORD_PTR /*data*/) {
  switch (message) {
    case WM_NCCALCSIZE:
      if (wParam != 0 && IsZoomed(window) != 0)
        reinterpret_cast<NCCALCSIZE_PARAMS*>(lParam)->rgrc[0] = MonitorOf(window).rcWork;
      return 0;
    case WM_NCPAINT:
      return 0;
    case WM_NCACTIVATE:
      return DefSubclassProc(window, message, wParam, -1);
    case WM_GETMINMAXINFO: {
      const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
      const MONITORINFO monitor = MonitorOf(window);
      const RECT& work = monitor.rcWork;
      auto& limits = *reinterpret_cast<MINMAXINFO*>(lParam);
      limits.ptMaxPosition = {work.left - monitor.rcMonitor.left, work.top - monitor.rcMonitor.top};
      limits.ptMaxSize = {work.right - work.left, work.bottom - work.top};
      return result;
    }
    case WM_NCDESTROY:
      (void)RemoveWindowSubclass(window, WithoutBorder, id);
      break;
    default:
      break;
  }
  return DefSubclassProc(window, message, wParam, lParam);
}

/// Takes a progress bar out of the desktop's theme, which ignores its colours.
void LeaveTheme(const wxGauge& bar) {
  const HWND window = WindowOf(bar);
  (void)SetWindowTheme(window, L"", L"");
  (void)SetWindowLongPtrW(window, GWL_STYLE, GetWindowLongPtrW(window, GWL_STYLE) | PBS_SMOOTH);
  (void)SetWindowLongPtrW(window, GWL_EXSTYLE,
                          GetWindowLongPtrW(window, GWL_EXSTYLE) & ~WS_EX_STATICEDGE);
}

COLORREF PaintOf(const wxColour& colour) {
  return RGB(colour.Red(), colour.Green(), colour.Blue());
}

}  // namespace

bool SystemDrawsTitleBars() {
  return false;
}

void AllowResizing(wxFrame& frame, bool allowed) {
  const HWND window = WindowOf(frame);
  (void)SetWindowSubclass(window, WithoutBorder, 0, 0);
  constexpr LONG_PTR resizable = WS_THICKFRAME | WS_MAXIMIZEBOX;
  const LONG_PTR style = GetWindowLongPtrW(window, GWL_STYLE) | WS_SYSMENU | WS_MINIMIZEBOX;
  (void)SetWindowLongPtrW(window, GWL_STYLE, allowed ? style | resizable : style & ~resizable);
  (void)SetWindowPos(window, nullptr, 0, 0, 0, 0,
                     SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

bool IsOnScreen(const wxTopLevelWindow& window) {
  return IsWindowVisible(WindowOf(window)) != 0;
}

void CentreOnOwner(wxTopLevelWindow& dialog) {
  dialog.CentreOnParent();
}

// The system takes the program's icon resource.
void SetDefaultIcons(const wxIconBundle& /*icons*/) {}

void BeginMove(wxFrame& frame) {
  Command(frame, SC_MOVE | HTCAPTION);
}
void BeginMoveByKeyboard(wxFrame& frame) {
  Command(frame, SC_MOVE);
}
void BeginResize(wxFrame& frame, Edge edge) {
  Command(frame, SC_SIZE | SideOf(edge));
}
void BeginResizeByKeyboard(wxFrame& frame) {
  Command(frame, SC_SIZE);
}

void SetAccessibleName(wxWindow& control, const wxString& name) {
  AccessibleOf(control).SetName(name);
}

wxString GetAccessibleName(const wxWindow& control) {
  IAccessible* accessible = nullptr;
  if (FAILED(AccessibleObjectFromWindow(WindowOf(control), static_cast<DWORD>(OBJID_CLIENT),
                                        IID_IAccessible, reinterpret_cast<void**>(&accessible))))
    return {};
  VARIANT self = {};
  self.vt = VT_I4;
  self.lVal = CHILDID_SELF;
  BSTR text = nullptr;
  wxString name;
  if (SUCCEEDED(accessible->get_accName(self, &text)) && text != nullptr) name = text;
  SysFreeString(text);
  (void)accessible->Release();
  return name;
}

void SetAccessibleRole(wxWindow& control, Role role) {
  AccessibleOf(control).SetRole(RoleOf(role));
}

void SetMaskCharacter(wxTextCtrl& box, wxChar character) {
  (void)SendMessageW(WindowOf(box), EM_SETPASSWORDCHAR, character, 0);
}

// The system takes the control after the label.
void SetMnemonicTarget(wxWindow& /*label*/, wxWindow& /*field*/) {}

void SetTroughColour(wxGauge& bar, const wxColour& colour) {
  LeaveTheme(bar);
  (void)SendMessageW(WindowOf(bar), PBM_SETBKCOLOR, 0, static_cast<LPARAM>(PaintOf(colour)));
}

void SetFillingColour(wxGauge& bar, const wxColour& colour) {
  LeaveTheme(bar);
  (void)SendMessageW(WindowOf(bar), PBM_SETBARCOLOR, 0, static_cast<LPARAM>(PaintOf(colour)));
}

void ShowAsPlainText(wxTextCtrl& box) {
  box.SetBackgroundColour(box.GetParent()->GetBackgroundColour());
  box.Bind(wxEVT_SET_FOCUS, [&box](wxFocusEvent& event) {
    event.Skip();
    // The box creates its caret after this event.
    box.CallAfter([&box] { (void)HideCaret(WindowOf(box)); });
  });
}

struct PopupWatch::State {
  explicit State(Handlers what) : handlers(std::move(what)) {}

  /// Handles a message for an open menu; `true` if the menu must not get it.
  bool Take(const MSG& message) {
    if (message.message == WM_MOUSEMOVE) handlers.pointer({message.pt.x, message.pt.y});
    if (message.message != WM_KEYDOWN) return false;
    const int direction = message.wParam == VK_LEFT ? -1 : message.wParam == VK_RIGHT ? 1 : 0;
    if (direction != 0) handlers.sideways(direction);
    return direction != 0;
  }

  // A hook gets no user data, so it finds the watch here.
  static thread_local State* watching;
  static LRESULT CALLBACK OnMessage(int code, WPARAM wParam, LPARAM lParam) {
    const bool taken = code == MSGF_MENU && watching != nullptr &&
                       watching->Take(*reinterpret_cast<const MSG*>(lParam));
    return taken ? 1 : CallNextHookEx(nullptr, code, wParam, lParam);
  }

  Handlers handlers;
  HHOOK hook = nullptr;
};

thread_local PopupWatch::State* PopupWatch::State::watching = nullptr;

PopupWatch::PopupWatch(wxMenu& /*menu*/, bool selectFirst, Handlers handlers)
    : state_(std::make_unique<State>(std::move(handlers))) {
  State::watching = state_.get();
  state_->hook = SetWindowsHookExW(WH_MSGFILTER, State::OnMessage, nullptr, GetCurrentThreadId());
  // The key is in the queue when the menu opens.
  if (selectFirst) (void)PostMessageW(GetActiveWindow(), WM_KEYDOWN, VK_DOWN, 0);
}

PopupWatch::~PopupWatch() {
  (void)UnhookWindowsHookEx(state_->hook);
  State::watching = nullptr;
}

void PopupWatch::Close() {
  (void)EndMenu();
}

}  // namespace slyver
