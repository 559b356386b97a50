#pragma once

#include <wx/bmpbndl.h>

namespace slyver {

/// Returns the program's icon, sharp at any size.
wxBitmapBundle AppIcon();

}  // namespace slyver
