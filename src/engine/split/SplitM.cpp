#include "engine/split/SplitM.h"

#include <algorithm>
#include <stdexcept>

#include "engine/base/FileError.h"
#include "engine/base/Gcrypt.h"
#include "engine/base/Numbers.h"
#include "engine/base/PathText.h"
#include "engine/bytes/Copy.h"
#include "engine/bytes/Exchange.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "engine/disk/NewFolders.h"
#include "engine/split/ChecksumFile.h"
#include "engine/split/PieceName.h"
#include "engine/talk/StepProgress.h"

namespace slyver {

namespace {

/// Returns how many pieces of `size` bytes `length` bytes make. Throws Error for a size of 0.
std::uint64_t CountPieces(std::uint64_t length, std::uint64_t size) {
  if (size == 0) throw Error("The Piece Size Must Be At Least 1 Byte.");
  return length / size + (length % size > 0 ? 1 : 0);
}

/// Returns a number of pieces as a 16-bit count, at most maxCount. Throws OverflowError for more,
/// unless `onlyOne` is written.
std::int16_t Count16(std::uint64_t count, bool onlyOne) {
  if (count > maxCount && !onlyOne) throw OverflowError();
  return static_cast<std::int16_t>(std::min<std::uint64_t>(count, maxCount));
}

std::string ZeroPerDigit(std::uint64_t count) {
  std::string mask = std::to_string(count);
  std::fill(mask.begin(), mask.end(), '0');
  return mask;
}

/// Adds a target with `length` bytes of the only source from `offset` on, or fewer at its end.
void AddPiece(CopyPlan& plan, std::uint64_t offset, std::uint64_t length) {
  const std::uint64_t all = plan.sources.State(0).length;
  plan.ranges.push_back({0, offset, std::min(length, all - offset)});
  plan.EndTarget();
}

void AddPieces(CopyPlan& plan, std::uint64_t size, std::uint64_t count,
               const SplitOptions& options) {
  const std::uint64_t length = plan.sources.State(0).length;
  if (options.SkipThenRange || options.SkipThenTrailer) {
    AddPiece(plan, size, options.SkipThenRange ? options.SecondPieceSize : options.TrailerSize);
  } else if (options.TwoPieceMode) {
    AddPiece(plan, 0, size);
    AddPiece(plan, size, count == 2 && length % size > 0 ? length % size : options.SecondPieceSize);
  } else {
    for (std::uint64_t i = 0; i < count; ++i) AddPiece(plan, i * size, size);
  }
}

/// Returns a watch that moves the bar from `value` to `end` in `count` steps, one for each piece,
/// and never back.
Watch StepsTo(double end, std::uint64_t count, Ui& ui, std::string_view bar, double value) {
  const double step = end / static_cast<double>(count);
  return StepProgress(ui, bar, value, [end, step](double now, std::size_t) {
    return std::max(now, std::min(now + step, end));
  });
}

/// Returns a watch for reading a trailer, whose bytes are not counted.
Watch WithoutBytes(const Watch& watch) {
  return [watch](CopyProgress progress) {
    progress.bytesDone = progress.bytesTotal = 0;
    return watch(progress);
  };
}

/// True if the folder contains an earlier set. Throws FileError if it cannot be listed.
bool HoldsPieces(const CopyPlan& plan) {
  bool holds = false;
  const std::error_code error =
      ListFolder(plan.names.folder, [&](const std::string& name, EntryKind kind) {
        holds = holds ||
                (kind != EntryKind::Folder &&
                 (plan.names.NumberOf(name) > 0 || (plan.list.isThere && name == plan.list.name)));
      });
  if (error) throw FileError(plan.names.folder, error);
  return holds;
}

/// Runs a user's split into `count` pieces; false if the user keeps those of an earlier one.
bool SplitForUser(CopyPlan& plan, const std::string& name, std::uint64_t count,
                  const SplitOptions& options, Ui& ui) {
  if (options.checksum) InitGcrypt();
  plan.names = PieceNames(options.outputFolder, name);
  plan.rights = plan.sources.State(0).rights;
  plan.isSet = true;
  plan.list.name = ChecksumNameOf(name);
  if (options.checksum)
    plan.list.line = [&](std::size_t index, const Digest& digest) {
      return ChecksumLine(PieceNameOf(name, static_cast<int>(index) + 1), digest);
    };
  RestoreEarlierSet(plan);
  plan.replaces = StateOfFirst(plan);
  // A list of the whole file does not belong to the pieces.
  plan.list.isThere =
      ReadChecksumFile(options.outputFolder, name).kind == Checksums::Kind::Understood;
  if (HoldsPieces(plan)) {
    if (!AskYesNo(ui,
                  "Pieces Of An Earlier Split Of " + name + " Are In " +
                      FolderText(options.outputFolder) + ". Do You Want To Replace Them?",
                  Stakes::Replaces))
      return false;
    plan.existing = Existing::Replace;
  }
  Copy(plan, StepsTo(100, count, ui, "pb", options.barValue));
  return true;
}

/// Cuts scratch files for a recovery, named name + "." + number with `width` digits.
void CutForRecovery(CopyPlan& plan, const std::string& name, std::size_t width, std::uint64_t count,
                    const SplitOptions& options, Ui& ui) {
  plan.names = {options.outputFolder, name + ".", "", 1, width};
  // Decrypted files are for this user alone.
  plan.rights = options.contents ? Rights{0600} : WithoutExecute(plan.sources.State(0).rights);
  plan.existing = Existing::ReplaceScratch;
  if (options.contents)
    plan.ranges = {{plan.sources.Add(options.contents), 0, options.contents->Length()}};
  const Watch watch = StepsTo(30, count, ui, "PB1", options.barValue);
  Copy(plan, options.SkipThenTrailer ? WithoutBytes(watch) : watch);
}

}  // namespace

SplitResult SplitFile(const std::filesystem::path& source, std::uint64_t pieceSize,
                      const SplitOptions& options, Ui& ui) {
  return ShowingErrors(ui, {}, [&]() -> SplitResult {
    const FileState state = options.state ? *options.state : StateOf(source);
    if (state.length <= pieceSize) {
      ui.Message("Chunk Size Bigger Than File Size.", Icon::Information);
      return {0, options.NumberMask};
    }
    const std::uint64_t count = CountPieces(state.length, pieceSize);
    const std::int16_t pieces = Count16(count, options.SkipThenRange || options.SkipThenTrailer);
    const std::string mask = options.NumberMask + ZeroPerDigit(count);
    const std::string name = options.title.empty() ? PathText(source.filename()) : options.title;
    NewFolders created;
    created.Create(options.outputFolder);
    CopyPlan plan;
    plan.sources.Add(source, state);
    AddPieces(plan, pieceSize, count, options);
    if (options.forRecovery)
      CutForRecovery(plan, name, mask.size(), count, options, ui);
    else if (!SplitForUser(plan, name, count, options, ui))
      return {0, mask, true};
    return {pieces, mask};
  });
}

ChunkResult ChunkToTemp(const std::filesystem::path& source, std::uint64_t chunkSize,
                        const ChunkOptions& options, Ui& ui) {
  return ShowingErrors(ui, {}, [&]() -> ChunkResult {
    const FileState state = options.state ? *options.state : StateOf(source);
    const std::uint64_t length = state.length;
    if (length <= chunkSize) {
      ui.Message("This file cannot be split as filesize is less or equal to maximum chunksize",
                 Icon::None);
      return {};
    }
    const std::uint64_t count = CountPieces(length, chunkSize);
    const std::int16_t chunks = Count16(count, options.only > 0);
    const std::string mask = ZeroPerDigit(count);
    (void)MakeFolder(options.folder);

    const std::uint64_t tailSize = options.SmallTailChunks ? options.TrailerSize : chunkSize;
    const std::uint64_t tails = std::min(CountPieces(length - chunkSize, tailSize), count - 1);
    CopyPlan plan;
    plan.sources.Add(source, state);
    if (options.only != 2) AddPiece(plan, 0, chunkSize);
    for (std::uint64_t i = 0; options.only != 1 && i < (options.only == 2 ? 1 : tails); ++i)
      AddPiece(plan, chunkSize + i * tailSize, tailSize);
    plan.names = {options.folder, "1.", ".ini", std::max(options.only, 1), mask.size()};
    plan.rights = state.rights;
    plan.existing = Existing::ReplaceScratch;
    const Watch watch = StepsTo(30, count, ui, "PB1", options.barValue);
    Copy(plan, options.only == 2 ? WithoutBytes(watch) : watch);
    return {chunks, mask};
  });
}

}  // namespace slyver
