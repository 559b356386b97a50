#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "console/ByteCount.h"
#include "console/Commands.h"
#include "console/ConsoleUi.h"
#include "console/Terminal.h"
#include "engine/base/FileError.h"
#include "engine/base/Numbers.h"

namespace {

using namespace slyver;

constexpr int statusFailed = 1;
constexpr int statusWrongUsage = 2;
constexpr int statusSignalBase = 128;

/// Runs the job; returns the exit status.
int Run(const Arguments& arguments, const Terminal& terminal) {
  ConsoleUi ui(terminal, arguments.console);
  try {
    const bool done = ShowingErrors(ui, false, [&] { return arguments.job(arguments, ui); });
    if (done)
      terminal.IgnoreStops();
    else
      ui.ShowHeldBack();
    if (done && !std::cout.flush()) {
      ui.Message("standard output: cannot be written", Icon::Critical);
      return statusFailed;
    }
    return done ? 0 : statusFailed;
  } catch (const Cancelled&) {
    return statusSignalBase + terminal.StopSignal();
  }
}

std::optional<std::uint64_t> WholeNumber(std::string_view text) {
  return NumberIn<std::uint64_t>(text);
}

/// Adds an argument that takes a path and refuses an empty one.
CLI::Option& AddPath(CLI::App& command, const std::string& name, std::string& path,
                     const std::string& help) {
  const auto check = [](const std::string& typed) {
    return typed.empty() ? std::string("the name is empty") : std::string();
  };
  return *command.add_option(name, path, help)->check(CLI::Validator(check, ""));
}

/// Adds an option with a number that `parse` reads; `expected` completes the error message.
template <typename Number, typename Parse>
CLI::Option& AddNumber(CLI::App& command, const std::string& name, Number& number,
                       const Parse& parse, const std::string& expected, const std::string& help) {
  const auto take = [&number, name, parse, expected](const std::string& text) {
    const std::optional<std::uint64_t> parsed = parse(text);
    if (!parsed)
      throw CLI::ConversionError(name.substr(name.find("--")) + ": \"" + text + "\" is not " +
                                 expected);
    number = *parsed;
  };
  return *command.add_option_function<std::string>(name, take, help);
}

void AddOutput(CLI::App& command, Arguments& arguments, const std::string& help) {
  AddPath(command, "-o,--output", arguments.output, help).type_name("DIR");
}

void AddCommonOptions(CLI::App& command, Arguments& arguments) {
  command.add_flag("-y,--yes", arguments.console.yes,
                   "Answer Yes to questions, except those about damaged or unproven pieces");
  command.add_flag("--force", arguments.console.force,
                   "Answer Yes to every question, even if pieces are damaged or unproven");
  command.add_flag("-q,--quiet", arguments.console.quiet,
                   "Show no progress and no messages of success");
  command.add_flag("-v,--verbose", arguments.verbose, "Print the path of every new file");
}

void AddSplit(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand("split", "Split a file into numbered .sly pieces");
  AddPath(command, "FILE", arguments.file, "The file to split").required();
  CLI::Option& size = AddNumber(
      command, "-s,--size", arguments.size, ParseByteCount,
      "a size; give whole bytes or a unit, as in 1450000, 1.44MB or 64K",
      "The size of a piece, in bytes or in K, M, G, T (of 1024), kB, MB, GB, TB (of 1000) "
      "[1450000]");
  size.type_name("BYTES");
  const auto parseCount = [](std::string_view text) {
    const std::optional<std::uint64_t> count = WholeNumber(text);
    return count == 0 ? std::nullopt : count;
  };
  AddNumber(command, "-n,--count", arguments.count, parseCount,
            "a number of pieces; give a whole number from 1", "The number of pieces")
      .type_name("N")
      ->excludes(&size);
  command.add_flag("--checksum", arguments.checksum,
                   "Write a checksum file FILE.sha256 next to the pieces");
  AddOutput(command, arguments, "The folder for the pieces [the folder of FILE]");
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = Split; });
}

void AddJoin(CLI::App& app, Arguments& arguments) {
  CLI::App& command =
      *app.add_subcommand("join", "Join the pieces of a split; prints the path of the joined file");
  AddPath(command, "PIECE", arguments.file, "Any one of the pieces").required();
  command.add_flag("--delete", arguments.deletePieces,
                   "Delete the pieces after the joined file is checked and on the disk");
  command.footer("If FILE.sha256 is next to the pieces, the joined file is checked against it.");
  AddOutput(command, arguments, "The folder for the joined file [the folder of PIECE]");
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = Join; });
}

void AddVerify(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand(
      "verify", "Check the pieces of a split: name and OK, DAMAGED or MISSING, separated by a tab");
  AddPath(command, "PIECE", arguments.file, "Any one of the pieces").required();
  command.footer(
      "Without a checksum file next to the pieces, only their numbers and sizes are checked.");
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = Verify; });
}

void AddPasswordFile(CLI::App& command, Arguments& arguments) {
  AddPath(command, "--password-file", arguments.passwordFile,
          "Read the password from the first line of this file; \"-\" is standard input. Without "
          "this option, ask on the terminal")
      .type_name("PATH");
}

CLI::Option& AddPassphraseFile(CLI::App& command, Arguments& arguments) {
  return *AddPath(command, "--passphrase-file", arguments.passphraseFile,
                  "Read the passphrase of the encrypted file from the first line of this file; "
                  "\"-\" is standard input")
              .type_name("PATH");
}

void AddHide(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand(
      "hide", "Hide a file in a copy of another, with a password; prints the copy's path");
  AddPath(command, "MAIN", arguments.file,
          "The file to hide in; it may already contain hidden files")
      .required();
  AddPath(command, "FILE", arguments.hidden, "The file to hide").required();
  command.footer(
      "Without --encrypt anyone can read the hidden file in the copy: the password protects only "
      "the list of names and lengths. With --encrypt a passphrase protects the contents, in the "
      "age format; anyone can list the names and lengths and see that something is encrypted. Each "
      "use of a passphrase takes about a second and 256 MiB of memory.");
  CLI::Option* const encrypt = command.add_flag(
      "-e,--encrypt", arguments.encrypt, "Encrypt the file with a passphrase, in the age format");
  AddOutput(command, arguments, "The folder for the copy [the folder of MAIN]");
  AddPasswordFile(command, arguments);
  AddPassphraseFile(command, arguments).needs(encrypt);
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = Hide; });
}

void AddList(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand(
      "list", "List the hidden files: serial number, size in bytes and name, separated by tabs");
  AddPath(command, "CARRIER", arguments.file, "The file that carries hidden files").required();
  AddPasswordFile(command, arguments);
  AddCommonOptions(command, arguments);
  command.callback([&arguments] { arguments.job = List; });
}

void AddRecover(CLI::App& app, Arguments& arguments) {
  CLI::App& command = *app.add_subcommand(
      "recover", "Recover hidden files, or the main file, from a carrier; prints their paths");
  AddPath(command, "CARRIER", arguments.file, "The file that carries hidden files").required();
  CLI::Option& number = AddNumber(command, "-f,--file", arguments.number, WholeNumber,
                                  "a serial number; give one that list prints",
                                  "The serial number of the hidden file, as printed by list");
  number.type_name("NUMBER");
  CLI::Option* const all =
      command.add_flag("-a,--all", arguments.all, "Recover every hidden file")->excludes(&number);
  CLI::Option* const main = command.add_flag("-m,--main", arguments.main, "Recover the main file")
                                ->excludes(&number)
                                ->excludes(all);
  AddOutput(command, arguments, "The folder for the recovered files [the folder of CARRIER]");
  AddPasswordFile(command, arguments);
  CLI::Option* const raw =
      command.add_flag("-r,--raw", arguments.raw,
                       "Recover encrypted files without decrypting them, for use with age");
  AddPassphraseFile(command, arguments).excludes(raw)->excludes(main);
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
  AddVerify(app, arguments);
  AddHide(app, arguments);
  AddList(app, arguments);
  AddRecover(app, arguments);
  try {
    std::reverse(words.begin(), words.end());  // CLI11 takes them from the end.
    app.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::cerr << error.what() << " (see --help)\n";
    return statusWrongUsage;
  }
  return Run(arguments, terminal);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Program(ArgumentsOf(argc, argv));
  } catch (const std::exception& error) {
    (void)std::fprintf(stderr, "%s\n", TextFor(error).c_str());
    return statusFailed;
  }
}
