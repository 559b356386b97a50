#include <windows.h>
#include <wx/init.h>
#include <wx/msgdlg.h>
#include <wx/msw/init.h>

#include "desktop/app/SlyverApp.h"
#include "desktop/system/WxText.h"

namespace {

/// The command line as it was given, quotation marks included, behind the program's name.
std::string CommandLineText() {
  const wxString line = GetCommandLineW();
  // The name stands in quotation marks when it has blanks.
  const bool quoted = line.StartsWith("\"");
  wxString arguments = quoted ? line.Mid(1).AfterFirst('"') : line.AfterFirst(' ');
  return slyver::FromWx(arguments.Trim(true).Trim(false));
}

/// A program with windows has no standard output.
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
