#include "desktop/app/CommandLine.h"
#include "desktop/system/WxText.h"

namespace slyver {

std::string CommandLineText(const wxAppConsole& app) {
  std::string line;
  for (int i = 1; i < app.argc; ++i) {
    if (i > 1) line += ' ';
    line += FromWx(app.argv[i]);
  }
  return line;
}

}  // namespace slyver
