#include <wx/init.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "desktop/app/HelpPage.h"
#include "desktop/app/SlyverApp.h"
#include "engine/base/Posix.h"

namespace {

int Answer(const std::string& text) {
  return std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}

/// Returns a line with the path of the help; empty if missing.
std::string HelpLine() {
  std::error_code unknown;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", unknown);
  const std::filesystem::path page = slyver::HelpPage(program.parent_path());
  return page.empty() ? "" : "Help: " + page.string() + "\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (!slyver::OpenStandardDescriptors()) return 1;
  // Bytes, since the toolkit's own arguments lose names that are not text.
  std::string line = argc > 1 ? argv[1] : "";
  const bool takesFile = line == "--split" || line == "--hide";
  const int most = takesFile ? 3 : 2;
  if (argc > most) {
    (void)std::fprintf(stderr, "slyver: one file at a time, not %d\n%s", argc - most + 1,
                       slyver::usageText);
    return 2;
  }
  if (line == "--help") return Answer(slyver::usageText + HelpLine());
  if (line == "--version") return Answer(slyver::versionText);
  if (argc == 3) line += std::string(" ") + argv[2];
  wxApp::SetInstance(new slyver::SlyverApp(line));
  argc = 1;
  argv[1] = nullptr;
  return wxEntry(argc, argv);
}
