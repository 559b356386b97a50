#pragma once

#include <wx/app.h>

#include <string>

namespace slyver {

/// All arguments of the program as one text. On Windows it is the command line as it was given,
/// quotation marks included, behind the program's name; elsewhere the arguments, a blank between
/// them.
std::string CommandLineText(const wxAppConsole& app);

}  // namespace slyver
