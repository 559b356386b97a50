#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "console/ByteCount.h"
#include "console/Commands.h"
#include "console/ConsoleUi.h"
#include "console/Terminal.h"
#include "engine/system/FileError.h"

namespace {

using namespace slyver;

constexpr int statusFailed = 1;
constexpr int statusWrongUsage = 2;
constexpr int statusSignalBase = 128;

/// Runs the job; returns the program's exit status.
int Run(const Arguments& arguments, const Terminal& terminal) {
  ConsoleUi ui(terminal, arguments.console);
  try {
    const bool done = ShowingErrors(ui, [&] { return arguments.job(arguments, ui); });
    if (done)
      terminal.IgnoreStops();
    else
      ui.JobFailed();
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

void AddPasswordFile(CLI::App& command, Arguments& arguments) {
  command
      .add_option("--password-file", arguments.passwordFile,
                  "Take the password from the first line of this file; \"-\" is standard input. "
                  "Without it the password is asked for on the terminal")
      ->type_name("PATH");
}

void AddHide(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand(
      "hide", "Hide a file in a copy of another, under a password; prints the copy's path");
  command
      .add_option("MAIN", arguments.file, "The file to hide in; it may carry hidden files already")
      ->required();
  command.add_option("FILE", arguments.hidden, "The file to hide")->required();
  command.footer(
      "The hidden file's contents are not encrypted: anyone can read them in the new file. "
      "The password only guards the list of names and lengths.");
  AddPasswordFile(command, arguments);
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = Hide; });
}

void AddList(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand(
      "list", "List the hidden files: serial number, size in bytes and name, separated by tabs");
  command.add_option("CARRIER", arguments.file, "The file that carries hidden files")->required();
  AddPasswordFile(command, arguments);
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = List; });
}

void AddRecover(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand(
      "recover", "Write a hidden file, or the main file, beside the carrier; prints its path");
  command.add_option("CARRIER", arguments.file, "The file that carries hidden files")->required();
  CLI::Option* const number = command.add_option(
      "-f,--file", arguments.number, "The serial number of the hidden file, as list prints it");
  number->type_name("NUMBER");
  command.add_flag("-m,--main", arguments.main, "Recover the main file")->excludes(number);
  AddPasswordFile(command, arguments);
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = Recover; });
}

int Program(std::vector<std::string> words) {
  const Terminal terminal;
  Arguments arguments;
  CLI::App app(
      "Splits big files into numbered .sly pieces, joins them, hides files in others and "
      "recovers them.",
      "sly");
  app.set_version_flag("--version", "sly " SLYVER_VERSION);
  app.require_subcommand(1);
  app.footer("Exit status: 0 done, 1 refused or failed, 2 wrong usage, 130 stopped by Ctrl-C.");
  AddSplit(app, arguments);
  AddJoin(app, arguments);
  AddHide(app, arguments);
  AddList(app, arguments);
  AddRecover(app, arguments);
  try {
    std::reverse(words.begin(), words.end());  // The parser takes them from the end.
    app.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : statusWrongUsage;
  }
  return Run(arguments, terminal);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Program(ArgumentsOf(argc, argv));
  } catch (const std::exception& error) {
    (void)std::fprintf(stderr, "%s\n", error.what());
    return statusFailed;
  }
}
