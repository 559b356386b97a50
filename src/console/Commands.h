#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "console/ConsoleUi.h"

namespace slyver {

struct Arguments;

/// Runs a command of the terminal program; returns `true` on success. Prints the paths of new files
/// on standard output, all else through `ui`. Throws Cancelled, and std::exception for errors that
/// the caller must show.
using Command = bool(const Arguments& arguments, ConsoleUi& ui);

/// The parsed command line. Paths are as typed.
struct Arguments {
  Command* job = nullptr;
  ConsoleOptions console;
  bool verbose = false;
  std::string file;           ///< The source, a piece, the main file or the carrier.
  std::string output;         ///< The output folder; empty for the folder of `file`.
  std::uint64_t size = 0;     ///< Of a piece, in bytes; 0 if not given.
  std::uint64_t count = 0;    ///< Of pieces; 0 if not given.
  bool checksum = false;      ///< Write a checksum file.
  bool deletePieces = false;  ///< Delete the pieces after the join.
  std::string hidden;         ///< The file to hide.
  std::string passwordFile;
  std::string passphraseFile;
  bool encrypt = false;                 ///< Encrypt the hidden file.
  bool raw = false;                     ///< Recover encrypted files without decryption.
  std::optional<std::uint64_t> number;  ///< Of the hidden file to recover, from 0.
  bool all = false;                     ///< Recover all hidden files.
  bool main = false;                    ///< Recover the main file.
};

Command Split;
Command Join;
Command Verify;
Command Hide;
Command List;
Command Recover;

}  // namespace slyver
