#include <windows.h>

#include "desktop/app/CommandLine.h"
#include "desktop/system/WxText.h"

namespace slyver {

std::string CommandLineText(const wxAppConsole& /*app*/) {
  const wxString line = GetCommandLineW();
  // The program's own name comes first; it stands in quotation marks when it has blanks.
  const bool quoted = line.StartsWith("\"");
  wxString arguments = quoted ? line.Mid(1).AfterFirst('"') : line.AfterFirst(' ');
  return FromWx(arguments.Trim(true).Trim(false));
}

}  // namespace slyver
