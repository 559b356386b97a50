#include <wx/init.h>

#include <cstdio>
#include <string>

#include "desktop/app/SlyverApp.h"

namespace {

int Answer(const char* text) {
  return std::fputs(text, stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  // The bytes as they are: the toolkit's own arguments lose names that are not text.
  std::string line = argc > 1 ? argv[1] : "";
  const bool takesFile = line == "--split" || line == "--hide";
  const int most = takesFile ? 3 : 2;
  if (argc > most) {
    (void)std::fprintf(stderr, "slyver: one file at a time, not %d\n%s", argc - most + 1,
                       slyver::usageText);
    return 2;
  }
  if (line == "--help") return Answer(slyver::usageText);
  if (line == "--version") return Answer(slyver::versionText);
  if (argc == 3) line += std::string(" ") + argv[2];
  wxApp::SetInstance(new slyver::SlyverApp(line));
  argc = 1;
  argv[1] = nullptr;
  return wxEntry(argc, argv);
}
