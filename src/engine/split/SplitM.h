#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "engine/bytes/RangeCipher.h"
#include "engine/disk/Files.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// What SplitFile is to cut; the split itself leaves all switches off.
struct SplitOptions {
  std::filesystem::path outputFolder;  ///< Its last level is made if need be.
  std::string title;             ///< What the pieces are named after, where not after the source.
  bool TwoPieceMode = false;     ///< Piece 2 is SecondPieceSize long, and the last.
  bool SkipThenRange = false;    ///< Skips one piece size, writes SecondPieceSize bytes, stops.
  bool SkipThenTrailer = false;  ///< As SkipThenRange, with TrailerSize bytes.
  std::uint64_t SecondPieceSize = 0;  ///< In bytes.
  std::uint64_t TrailerSize = 0;      ///< In bytes.
  std::optional<FileState> state;     ///< The state that the source must still be in, if known.
  std::string NumberMask;             ///< The zeros that an earlier call returned.
  double barValue = 0;                ///< Where the progress bar stands, 0 to 100.
  bool checksum = false;              ///< Pieces get a checksum file beside them.
  /// Pieces of a recovery are named name + "." + number, filled with zeros to the length of
  /// NumberMask, and replace scratch files unasked; those of a split are named by PieceNameOf().
  bool forRecovery = false;
  std::shared_ptr<const RangeCipher> cipher;  ///< Changes the bytes of the one piece, or is null.
};

struct SplitResult {
  /// The number of pieces that the size makes, 2 to 32767; 0 when refused or failed. Where a switch
  /// skips to one piece, a larger number counts as 32767.
  std::int16_t pieces = 0;
  std::string NumberMask;  ///< options.NumberMask and one more "0" for each digit of the number.
  bool declined = false;   ///< The user keeps the pieces of an earlier split.
};

/// Cuts `source` into pieces of `pieceSize` bytes (1 or more), the last one holding the rest: piece
/// i, counted from 1, holds the bytes from (i - 1) * pieceSize on. Where pieces of the same name,
/// of any number, are in the output folder, the user is asked whether the new set may replace them;
/// they stay until it is complete. A checksum file of pieces counts as one of them. Two programs at
/// once cannot mix their pieces: only one of them gets to write a split's first piece. Where piece
/// 1 stands, its set stands.
///
/// A file not longer than a piece is refused with "Chunk Size Bigger Than File Size.", one that
/// would give more than 32767 pieces with "Overflow". Any other failure is shown by its own
/// description. In all these cases the result is 0 pieces. After a failure the pieces that were
/// complete stay, or the earlier set. Throws Cancelled when the user stops it; then no new piece
/// stays.
SplitResult SplitFile(const std::filesystem::path& source, std::uint64_t pieceSize,
                      const SplitOptions& options, Ui& ui);

struct ChunkOptions {
  std::filesystem::path folder;    ///< Where the chunks go; its last level is made if need be.
  bool SmallTailChunks = false;    ///< Every chunk from chunk 2 on is TrailerSize bytes long.
  std::uint64_t TrailerSize = 0;   ///< In bytes, at least 1 where SmallTailChunks is set.
  int only = 0;                    ///< The one chunk to write, 1 or 2; 0 writes them all.
  std::optional<FileState> state;  ///< The state that the source must still be in, if known.
  double barValue = 0;             ///< Where the progress bar stands, 0 to 100.
};

struct ChunkResult {
  /// length / chunkSize, rounded up; 0 when refused or failed. Where only one chunk was asked for,
  /// a larger number counts as 32767.
  std::int16_t chunks = 0;
  std::string NumberMask;  ///< One "0" for each digit of length / chunkSize, rounded up.
};

/// Cuts `source` into chunk files of at most `chunkSize` bytes (1 or more) named "1." + number +
/// ".ini", the number filled with zeros to the length of NumberMask. With SmallTailChunks the bytes
/// may come to an end before the chunks do, and then no file is written for the rest of them; or
/// the chunks before the bytes, and then the rest of the bytes is left out.
///
/// A source not longer than a chunk is refused with a message; failures are shown and throw as
/// SplitFile's do.
ChunkResult ChunkToTemp(const std::filesystem::path& source, std::uint64_t chunkSize,
                        const ChunkOptions& options, Ui& ui);

}  // namespace slyver
