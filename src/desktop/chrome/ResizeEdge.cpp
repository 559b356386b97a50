#include "desktop/chrome/ResizeEdge.h"

#include <wx/cursor.h>

#include "desktop/chrome/modWinXP.h"

namespace slyver {

namespace {

wxCursor CursorOf(Edge edge) {
  switch (edge) {
    case Edge::Left:
    case Edge::Right:
      return {wxCURSOR_SIZEWE};
    case Edge::Bottom:
      return {wxCURSOR_SIZENS};
    case Edge::BottomLeft:
      return {wxCURSOR_SIZENESW};
    case Edge::BottomRight:
      break;
  }
  return {wxCURSOR_SIZENWSE};
}

}  // namespace

ResizeEdge::ResizeEdge(wxFrame* frame, Edge edge, const wxString& name)
    : wxWindow(frame, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, name),
      frame_(*frame),
      edge_(edge) {
  SetAccessibleRole(*this, Role::Separator);
  SetAccessibleName(*this, "Window Edge");
  SetMinSize({EdgeWidth(*this), EdgeWidth(*this)});
  Bind(wxEVT_MOTION, &ResizeEdge::Motion, this);
  Bind(wxEVT_LEFT_DOWN, [this](wxMouseEvent& event) {
    if (allowed_) BeginResize(frame_, EdgeAt(event.GetPosition()));
  });
}

void ResizeEdge::SetResizing(bool allowed) {
  allowed_ = allowed;
  if (!allowed) SetCursor(wxNullCursor);
}

Edge ResizeEdge::EdgeAt(const wxPoint& position) const {
  const int corner = TitleBarHeight(*this);
  const wxSize size = GetClientSize();
  if (edge_ != Edge::Bottom) {
    if (position.y < size.y - corner) return edge_;
    return edge_ == Edge::Left ? Edge::BottomLeft : Edge::BottomRight;
  }
  if (position.x < corner) return Edge::BottomLeft;
  return position.x >= size.x - corner ? Edge::BottomRight : Edge::Bottom;
}

void ResizeEdge::Motion(wxMouseEvent& event) {
  if (allowed_) SetCursor(CursorOf(EdgeAt(event.GetPosition())));
}

}  // namespace slyver
