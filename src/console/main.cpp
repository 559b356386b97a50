#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>

#include "console/ByteCount.h"
#include "console/ConsoleUi.h"
#include "console/Terminal.h"
#include "split/JoinM.h"
#include "split/PieceName.h"
#include "split/SizeArithmetic.h"
#include "split/SlyIt.h"
#include "system/FileError.h"
#include "system/PathText.h"

namespace {

using namespace slyver;
namespace fs = std::filesystem;

constexpr int statusFailed = 1;
constexpr int statusWrongUsage = 2;
constexpr int statusSignalBase = 128;

struct Arguments;

/// A job: returns whether it was done. Throws Cancelled.
using Job = bool (*)(const Arguments&, Ui&);

/// What the command line holds.
struct Arguments {
  Job job = nullptr;
  ConsoleOptions console;
  bool verbose = false;
  std::string file;
  std::string output;
  std::uint64_t size = 0;
  std::uint64_t count = 0;
};

/// The name that the user typed, whatever the folder the program was started in.
fs::path FullPathOf(const std::string& typed) {
  return fs::absolute(PathFromText(typed));
}

/// Puts what --size and --count say where the form would hold it. Throws FileError when the file
/// cannot be looked at.
void TakeSize(SplitForm& form, const Arguments& arguments) {
  form.Option2 = arguments.size > 0 || arguments.count > 0;
  if (arguments.size > 0) form.Text3 = std::to_string(arguments.size);
  if (arguments.count == 0) return;
  form.Nofile = std::to_string(arguments.count);
  form.Text3 = SizeFromCount(form.Nofile, "", FileLength(form.Text1)).other.value_or("");
}

bool Split(const Arguments& arguments, Ui& ui) {
  SplitForm form;
  form.Text1 = FullPathOf(arguments.file);
  form.Text2 = arguments.output.empty() ? form.Text1.parent_path() : FullPathOf(arguments.output);
  TakeSize(form, arguments);
  const int pieces = SlyIt(form, ui);
  for (int i = 1; arguments.verbose && i <= pieces; ++i)
    std::cout << PathText(form.Text2) << PieceNameOf(PathText(form.Text1.filename()), i) << '\n';
  return pieces > 0;
}

bool Join(const Arguments& arguments, Ui& ui) {
  const std::optional<fs::path> joined = JoinPieces(FullPathOf(arguments.file), ui);
  if (joined) std::cout << PathText(*joined) << '\n';
  return joined.has_value();
}

/// Runs the job; returns the program's exit status.
int Run(const Arguments& arguments) {
  const Terminal terminal;
  ConsoleUi ui(terminal, arguments.console);
  try {
    const bool done = ShowingErrors(ui, [&] { return arguments.job(arguments, ui); });
    if (!done) ui.JobFailed();
    if (done && !std::cout.flush()) {
      ui.Message("standard output: cannot be written", Icon::Critical);
      return statusFailed;
    }
    return done ? 0 : statusFailed;
  } catch (const Cancelled&) {
    return statusSignalBase + terminal.StopSignal();
  }
}

void AddCommonOptions(CLI::App& command, Arguments& arguments) {
  command.add_flag("-y,--yes", arguments.console.yes, "Answer every question with Yes");
  command.add_flag("-q,--quiet", arguments.console.quiet,
                   "Show neither progress nor messages of success");
  command.add_flag("-v,--verbose", arguments.verbose, "Print the path of every file made");
}

void AddSplit(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand("split", "Split a file into numbered .sly pieces");
  command.add_option("FILE", arguments.file, "The file to split")->required();
  const auto parseSize = [&arguments](const std::string& text) {
    const std::optional<std::uint64_t> bytes = ParseByteCount(text);
    if (!bytes)
      throw CLI::ValidationError("--size",
                                 "\"" + text +
                                     "\" is not a size; give whole bytes or a unit, as in 1450000, "
                                     "1.44MB or 64KiB");
    arguments.size = *bytes;
  };
  CLI::Option* const size =
      command.add_option_function<std::string>("-s,--size", parseSize,
                                               "The size of a piece, in bytes or in kB, MB, GB, "
                                               "KiB, MiB, GiB [1450000]");
  size->type_name("BYTES");
  command.add_option("-n,--count", arguments.count, "The number of pieces")
      ->type_name("N")
      ->check(CLI::PositiveNumber)
      ->excludes(size);
  command
      .add_option("-o,--output", arguments.output, "The folder for the pieces [the folder of FILE]")
      ->type_name("DIR");
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = Split; });
}

void AddJoin(CLI::App& app, Arguments& arguments) {
  CLI::App& command =
      *app.add_subcommand("join", "Join the pieces of a split; prints the path of the joined file");
  command.add_option("PIECE", arguments.file, "Any one of the pieces")->required();
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = Join; });
}

int Program(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("Splits a big file into numbered .sly pieces and joins them again.", "sly");
  app.set_version_flag("--version", "sly " SLYVER_VERSION);
  app.require_subcommand(1);
  app.footer("Exit status: 0 done, 1 refused or failed, 2 wrong usage, 130 stopped by Ctrl-C.");
  AddSplit(app, arguments);
  AddJoin(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : statusWrongUsage;
  }
  return Run(arguments);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Program(argc, argv);
  } catch (const std::exception& error) {
    (void)std::fprintf(stderr, "%s\n", error.what());
    return statusFailed;
  }
}
