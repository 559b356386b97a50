#pragma once

#include <wx/bmpbndl.h>

namespace slyver {

/// The program's icon, sharp at any size.
wxBitmapBundle AppIcon();

}  // namespace slyver
