#pragma once

#include <wx/app.h>

#include <memory>
#include <string>

namespace slyver {

/// The desktop program as the toolkit runs it.
class SlyverApp final : public wxApp {
 public:
  /// `commandLine`: all arguments as one text.
  explicit SlyverApp(std::string commandLine);
  ~SlyverApp() override;

  bool Initialize(int& count, wxChar** arguments) override;
  bool OnInit() override;
  int OnExit() override;

 private:
  class Program;
  std::string commandLine_;
  std::unique_ptr<Program> program_;
};

/// The output of `--help` and `--version`.
inline constexpr const char* usageText =
    "usage: slyver [FILE] | --split [FILE] | --hide [FILE] | --join | --recover\n"
    "Splits FILE into pieces; if FILE is a .sly piece, joins it with the others.\n"
    "Without FILE, asks what to do. The terminal program is sly.\n";
inline constexpr const char* versionText = "slyver " SLYVER_VERSION "\n";

}  // namespace slyver
