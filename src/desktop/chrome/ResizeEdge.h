#pragma once

#include <wx/frame.h>
#include <wx/window.h>

#include "desktop/chrome/WindowSystem.h"

namespace slyver {

/// A thin strip along a side of a form that resizes it. Its ends at the form's lower corners resize
/// both ways.
class ResizeEdge final : public wxWindow {
 public:
  ResizeEdge(wxFrame* frame, Edge edge, const wxString& name);

  void SetResizing(bool allowed);
  bool AcceptsFocus() const override { return false; }

 private:
  Edge EdgeAt(const wxPoint& position) const;
  void Motion(wxMouseEvent& event);

  wxFrame& frame_;
  Edge edge_;
  bool allowed_ = false;
};

}  // namespace slyver
