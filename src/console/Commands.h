#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "console/ConsoleUi.h"

namespace slyver {

struct Arguments;

/// A command of the terminal program: does its job, prints the paths of the files made on standard
/// output and says everything else through `ui`. Returns whether the job was done. Throws
/// std::exception for an error that is still to be shown, and Cancelled.
using Command = bool(const Arguments& arguments, ConsoleUi& ui);

/// What the command line holds. Names are as the user typed them.
struct Arguments {
  Command* job = nullptr;
  ConsoleOptions console;
  bool verbose = false;
  std::string file;    ///< The file to work on: the source, a piece, the main file or the carrier.
  std::string output;  ///< The folder for what is made; empty for the folder of `file`.
  std::uint64_t size = 0;     ///< In bytes; 0 when not given.
  std::uint64_t count = 0;    ///< Of pieces; 0 when not given.
  bool checksum = false;      ///< A checksum file is wanted.
  bool deletePieces = false;  ///< Once they are joined.
  std::string hidden;         ///< The file to hide.
  std::string passwordFile;
  std::string passphraseFile;
  bool encrypt = false;                 ///< The file is to be hidden encrypted.
  bool raw = false;                     ///< Encrypted files are to be recovered as they are.
  std::optional<std::uint64_t> number;  ///< Of the hidden file to recover, from 0.
  bool all = false;                     ///< All hidden files are to be recovered.
  bool main = false;                    ///< The main file is to be recovered.
};

Command Split;
Command Join;
Command Verify;
Command Hide;
Command List;
Command Recover;

}  // namespace slyver
