#include <windows.h>
#include <wx/init.h>
#include <wx/msgdlg.h>
#include <wx/msw/init.h>

#include "desktop/app/SlyverApp.h"
#include "desktop/system/WxText.h"

namespace {

/// Returns the command line after the program's name, quotation marks included.
std::string CommandLineText() {
  const wxString line = GetCommandLineW();
  // A name with blanks is in quotation marks.
  const bool quoted = line.StartsWith("\"");
  wxString arguments = quoted ? line.Mid(1).AfterFirst('"') : line.AfterFirst(' ');
  return slyver::FromWx(arguments.Trim(true).Trim(false));
}

/// Shows `text` in a box: a windowed program has no standard output.
int Answer(const char* text) {
  (void)MessageBoxW(nullptr, slyver::ToWx(text).wc_str(), L"Slyver", MB_OK);
  return 0;
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, LPSTR /*line*/, int show) {
  const std::string argument = CommandLineText();
  if (argument == "--help") return Answer(slyver::usageText);
  if (argument == "--version") return Answer(slyver::versionText);
  wxApp::SetInstance(new slyver::SlyverApp(argument));
  return wxEntry(instance, previous, nullptr, show);
}
