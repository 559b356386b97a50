#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "engine/bytes/Source.h"
#include "engine/disk/Files.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// What SplitFile cuts. A user's split leaves all switches off.
struct SplitOptions {
  std::filesystem::path outputFolder;  ///< Its last level is created if missing.
  std::string title;                   ///< The pieces' base name; the source's if empty.
  bool TwoPieceMode = false;           ///< Piece 2 has SecondPieceSize bytes and is the last.
  bool SkipThenRange = false;    ///< Skips one piece size, writes SecondPieceSize bytes, stops.
  bool SkipThenTrailer = false;  ///< As SkipThenRange, with TrailerSize bytes.
  std::uint64_t SecondPieceSize = 0;  ///< In bytes.
  std::uint64_t TrailerSize = 0;      ///< In bytes.
  std::optional<FileState> state;     ///< The state that the source must still be in, if known.
  std::string NumberMask;             ///< The zeros that an earlier call returned.
  double barValue = 0;                ///< The progress bar's value at the start, 0 to 100.
  bool checksum = false;              ///< Writes a checksum file next to the pieces.
  /// Names pieces name + "." + number, with zeros to the length of NumberMask, and replaces scratch
  /// files without asking. Otherwise pieces are named by PieceNameOf().
  bool forRecovery = false;
  std::shared_ptr<const Source> contents;  ///< Of the only piece, or null for the source's bytes.
};

struct SplitResult {
  /// The number of pieces, 2 to maxCount; 0 if refused or failed. At most maxCount if a switch
  /// skips to one piece.
  std::int16_t pieces = 0;
  std::string NumberMask;  ///< options.NumberMask and one more "0" for each digit of the number.
  bool declined = false;   ///< The user keeps the pieces of an earlier split.
};

/// Cuts `source` into pieces of `pieceSize` bytes (1 or more), the last one with the rest. Asks
/// before it replaces pieces of the same name in the output folder; they stay until the new set is
/// complete. A checksum file of pieces counts as one. Two programs cannot mix their pieces: the
/// lock of piece 1 is the set's. If piece 1 exists, its set is complete.
///
/// Refuses a file not longer than a piece with "Chunk Size Bigger Than File Size.", and more than
/// maxCount pieces with "Overflow". Other errors are shown. The result is then 0 pieces, and
/// complete pieces stay, or the earlier set. Throws Cancelled if the user stops it; then no new
/// piece stays.
SplitResult SplitFile(const std::filesystem::path& source, std::uint64_t pieceSize,
                      const SplitOptions& options, Ui& ui);

struct ChunkOptions {
  std::filesystem::path folder;    ///< The output folder; its last level is created if missing.
  bool SmallTailChunks = false;    ///< Every chunk from chunk 2 on has TrailerSize bytes.
  std::uint64_t TrailerSize = 0;   ///< In bytes; at least 1 with SmallTailChunks.
  int only = 0;                    ///< The only chunk to write, 1 or 2; 0 writes all.
  std::optional<FileState> state;  ///< The state that the source must still be in, if known.
  double barValue = 0;             ///< The progress bar's value at the start, 0 to 100.
};

struct ChunkResult {
  /// length / chunkSize, rounded up; 0 if refused or failed. At most maxCount for a single chunk.
  std::int16_t chunks = 0;
  std::string NumberMask;  ///< One "0" for each digit of length / chunkSize, rounded up.
};

/// Cuts `source` into chunk files of at most `chunkSize` bytes (1 or more) named "1." + number +
/// ".ini", with zeros to the length of NumberMask. With SmallTailChunks, chunks without bytes are
/// not written, and bytes after the last chunk are left out.
///
/// Refuses a source not longer than a chunk with a message. Shows errors and throws as SplitFile()
/// does.
ChunkResult ChunkToTemp(const std::filesystem::path& source, std::uint64_t chunkSize,
                        const ChunkOptions& options, Ui& ui);

}  // namespace slyver
