#include <gtk/gtk.h>
#ifdef GDK_WINDOWING_WAYLAND
#include <gdk/gdkwayland.h>
#endif

#include <string>
#include <utility>

#include "desktop/chrome/WindowSystem.h"

namespace slyver {

namespace {

GtkWindow* WindowOf(const wxFrame& frame) {
  return GTK_WINDOW(frame.GetHandle());
}

GdkWindowEdge EdgeOf(Edge edge) {
  switch (edge) {
    case Edge::Left:
      return GDK_WINDOW_EDGE_WEST;
    case Edge::Right:
      return GDK_WINDOW_EDGE_EAST;
    case Edge::Bottom:
      return GDK_WINDOW_EDGE_SOUTH;
    case Edge::BottomLeft:
      return GDK_WINDOW_EDGE_SOUTH_WEST;
    case Edge::BottomRight:
      break;
  }
  return GDK_WINDOW_EDGE_SOUTH_EAST;
}

AtkRole RoleOf(Role role) {
  switch (role) {
    case Role::TitleBar:
      return ATK_ROLE_TITLE_BAR;
    case Role::Button:
      return ATK_ROLE_PUSH_BUTTON;
    case Role::MenuBar:
      return ATK_ROLE_MENU_BAR;
    case Role::Separator:
      break;
  }
  return ATK_ROLE_SEPARATOR;
}

// With a button the window system follows the pointer, without one the arrow keys.
constexpr int leftButton = 1;
constexpr int noButton = 0;

void Move(const wxFrame& frame, int button) {
  const wxPoint pointer = wxGetMousePosition();
  gtk_window_begin_move_drag(WindowOf(frame), button, pointer.x, pointer.y,
                             gtk_get_current_event_time());
}

void Resize(const wxFrame& frame, GdkWindowEdge edge, int button) {
  const wxPoint pointer = wxGetMousePosition();
  gtk_window_begin_resize_drag(WindowOf(frame), edge, button, pointer.x, pointer.y,
                               gtk_get_current_event_time());
}

void SetFunctions(GtkWidget* widget, gpointer functions) {
  gdk_window_set_functions(gtk_widget_get_window(widget),
                           static_cast<GdkWMFunction>(GPOINTER_TO_INT(functions)));
}

void AddStyle(const wxWindow& control, const std::string& style) {
  GtkCssProvider* const provider = gtk_css_provider_new();
  (void)gtk_css_provider_load_from_data(provider, style.c_str(), -1, nullptr);
  gtk_style_context_add_provider(gtk_widget_get_style_context(control.GetHandle()),
                                 GTK_STYLE_PROVIDER(provider),
                                 GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(provider);
}

std::string Painted(const wxColour& colour) {
  const std::string name = colour.GetAsString(wxC2S_HTML_SYNTAX).ToStdString();
  return "{ background: " + name + "; border-color: " + name +
         "; border-radius: 2px; min-height: 0.5em; }";
}

gboolean OnMenuKey(GtkWidget* /*menu*/, GdkEventKey* event, gpointer handlers) {
  const int direction = event->keyval == GDK_KEY_Left ? -1 : event->keyval == GDK_KEY_Right ? 1 : 0;
  if (direction == 0) return FALSE;
  static_cast<PopupWatch::Handlers*>(handlers)->sideways(direction);
  return TRUE;
}

gboolean OnMenuPointer(GtkWidget* /*menu*/, GdkEventMotion* event, gpointer handlers) {
  static_cast<PopupWatch::Handlers*>(handlers)->pointer(
      {static_cast<int>(event->x_root), static_cast<int>(event->y_root)});
  return FALSE;
}

void OnMenuShown(GtkWidget* menu, gpointer /*handlers*/) {
  gtk_menu_shell_select_first(GTK_MENU_SHELL(menu), TRUE);
}

}  // namespace

bool SystemDrawsTitleBars() {
#ifdef GDK_WINDOWING_WAYLAND
  GdkDisplay* const display = gdk_display_get_default();
  return GDK_IS_WAYLAND_DISPLAY(display) && gdk_wayland_display_prefers_ssd(display);
#else
  return false;
#endif
}

void AllowResizing(wxFrame& frame, bool allowed) {
  gtk_window_set_resizable(WindowOf(frame), allowed);
  int functions = GDK_FUNC_MOVE | GDK_FUNC_MINIMIZE | GDK_FUNC_CLOSE;
  if (allowed) functions |= GDK_FUNC_RESIZE | GDK_FUNC_MAXIMIZE;
  GtkWidget* const widget = frame.GetHandle();
  // The toolkit forbids resizing a window without a system border, so the functions are set after
  // it has, when the window is mapped.
  g_signal_handlers_disconnect_matched(widget, G_SIGNAL_MATCH_FUNC, 0, 0, nullptr,
                                       reinterpret_cast<gpointer>(SetFunctions), nullptr);
  g_signal_connect(widget, "map", G_CALLBACK(SetFunctions), GINT_TO_POINTER(functions));
  if (gtk_widget_get_mapped(widget)) SetFunctions(widget, GINT_TO_POINTER(functions));
}

bool IsOnScreen(const wxTopLevelWindow& window) {
  GtkWidget* const widget = window.GetHandle();
  if (gtk_widget_get_mapped(widget) == 0) return false;
  GdkWindow* const shown = gtk_widget_get_window(widget);
  const wxSize size(gdk_window_get_width(shown), gdk_window_get_height(shown));
  return window.GetSize() == size && gtk_widget_get_allocated_width(widget) == size.x &&
         gtk_widget_get_allocated_height(widget) == size.y;
}

// wxWidgets would ask for the owner's position, which it may not know yet.
void CentreOnOwner(wxTopLevelWindow& dialog) {
  gtk_window_set_position(GTK_WINDOW(dialog.GetHandle()), dialog.GetParent() == nullptr
                                                              ? GTK_WIN_POS_CENTER
                                                              : GTK_WIN_POS_CENTER_ON_PARENT);
}

void SetDefaultIcons(const wxIconBundle& icons) {
  GList* list = nullptr;
  for (std::size_t i = 0; i < icons.GetIconCount(); ++i)
    list = g_list_prepend(list, icons.GetIconByIndex(i).GetPixbuf());
  gtk_window_set_default_icon_list(list);
  g_list_free(list);
}

void BeginMove(wxFrame& frame) {
  Move(frame, leftButton);
}
void BeginMoveByKeyboard(wxFrame& frame) {
  Move(frame, noButton);
}
void BeginResize(wxFrame& frame, Edge edge) {
  Resize(frame, EdgeOf(edge), leftButton);
}
void BeginResizeByKeyboard(wxFrame& frame) {
  Resize(frame, EdgeOf(Edge::BottomRight), noButton);
}

void SetAccessibleName(wxWindow& control, const wxString& name) {
  atk_object_set_name(gtk_widget_get_accessible(control.GetHandle()), name.utf8_str());
}

wxString GetAccessibleName(const wxWindow& control) {
  const char* const name = atk_object_get_name(gtk_widget_get_accessible(control.GetHandle()));
  return name == nullptr ? wxString() : wxString::FromUTF8(name);
}

void SetAccessibleRole(wxWindow& control, Role role) {
  atk_object_set_role(gtk_widget_get_accessible(control.GetHandle()), RoleOf(role));
}

void SetMaskCharacter(wxTextCtrl& box, wxChar character) {
  gtk_entry_set_invisible_char(GTK_ENTRY(box.GetHandle()), static_cast<gunichar>(character));
}

void SetMnemonicTarget(wxWindow& label, wxWindow& field) {
  if (GTK_IS_LABEL(label.GetHandle()))
    gtk_label_set_mnemonic_widget(GTK_LABEL(label.GetHandle()), field.GetHandle());
}

void SetTroughColour(wxGauge& bar, const wxColour& colour) {
  AddStyle(bar, "trough " + Painted(colour));
}

void SetFillingColour(wxGauge& bar, const wxColour& colour) {
  AddStyle(bar, "progress " + Painted(colour));
}

void ShowAsPlainText(wxTextCtrl& box) {
  AddStyle(box,
           "entry { background: none; border: none; box-shadow: none; padding: 0; caret-color: "
           "transparent; }");
}

struct PopupWatch::State {
  GtkWidget* menu;
  Handlers handlers;
};

PopupWatch::PopupWatch(wxMenu& menu, bool selectFirst, Handlers handlers)
    : state_(std::make_unique<State>(State{menu.m_menu, std::move(handlers)})) {
  gpointer const data = &state_->handlers;
  g_signal_connect(state_->menu, "key-press-event", G_CALLBACK(OnMenuKey), data);
  g_signal_connect(state_->menu, "motion-notify-event", G_CALLBACK(OnMenuPointer), data);
  if (selectFirst) g_signal_connect(state_->menu, "map", G_CALLBACK(OnMenuShown), data);
}

PopupWatch::~PopupWatch() {
  g_signal_handlers_disconnect_by_data(state_->menu, &state_->handlers);
}

void PopupWatch::Close() {
  gtk_menu_popdown(GTK_MENU(state_->menu));
}

}  // namespace slyver
