#include "engine/split/SplitM.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "engine/base/FileError.h"
#include "engine/base/Gcrypt.h"
#include "engine/base/PathText.h"
#include "engine/bytes/Copy.h"
#include "engine/bytes/TargetSet.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "engine/disk/NewFolders.h"
#include "engine/split/ChecksumFile.h"
#include "engine/split/PieceName.h"
#include "engine/talk/StepProgress.h"

namespace slyver {

namespace {

/// How many pieces of `size` bytes `length` bytes make.
std::uint64_t CountPieces(std::uint64_t length, std::uint64_t size) {
  if (size == 0) throw Error("The Piece Size Must Be At Least 1 Byte.");
  return length / size + (length % size > 0 ? 1 : 0);
}

/// A number of pieces as the 16-bit count that it is told by. Throws OverflowError past 32767,
/// unless only one of them is written.
std::int16_t Count16(std::uint64_t count, bool onlyOne) {
  constexpr std::uint64_t most = std::numeric_limits<std::int16_t>::max();
  if (count > most && !onlyOne) throw OverflowError();
  return static_cast<std::int16_t>(std::min(count, most));
}

std::string ZeroPerDigit(std::uint64_t count) {
  std::string mask = std::to_string(count);
  std::fill(mask.begin(), mask.end(), '0');
  return mask;
}

/// Adds a target that holds `length` bytes of the plan's only source from `offset` on, or what the
/// source has of them.
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

/// Takes the bar from `value` to `end` in `count` steps, one for each piece begun; a bar that
/// stands higher already stays.
Watch StepsTo(double end, std::uint64_t count, Ui& ui, std::string_view bar, double value) {
  const double step = end / static_cast<double>(count);
  return StepProgress(ui, bar, value, [end, step](double now, std::size_t) {
    return std::max(now, std::min(now + step, end));
  });
}

/// The steps of a look at a trailer, whose bytes are not the job's.
Watch WithoutBytes(const Watch& watch) {
  return [watch](CopyProgress progress) {
    progress.bytesDone = progress.bytesTotal = 0;
    return watch(progress);
  };
}

/// The number of a file in the set of the pieces of `name`. Its checksum file belongs to the set if
/// it is one of pieces: under that name there may as well be one of the file itself.
int NumberInSet(const std::filesystem::path& folder, const std::string& fileName,
                const std::string& name) {
  if (fileName != ChecksumNameOf(name)) return PieceNumberOf(fileName, name);
  const Checksums checksums = ReadChecksumFile(folder, name);
  return checksums.kind == Checksums::Kind::Understood ? CopyPlan::numberOfList : 0;
}

/// Whether an earlier set is in the folder. Throws FileError when it cannot be listed.
bool HoldsPieces(const CopyPlan& plan) {
  bool holds = false;
  const std::error_code error =
      ListFolder(plan.names.folder, [&](const std::string& name, EntryKind kind) {
        holds = holds || (kind != EntryKind::Folder && plan.numberInSet(name) > 0);
      });
  if (error) throw FileError(plan.names.folder, error);
  return holds;
}

}  // namespace

SplitResult SplitFile(const std::filesystem::path& source, std::uint64_t pieceSize,
                      const SplitOptions& options, Ui& ui) {
  return ShowingErrors(ui, {}, [&]() -> SplitResult {
    const FileState state = options.state ? *options.state : StateOf(source);
    const std::uint64_t length = state.length;
    if (length <= pieceSize) {
      ui.Message("Chunk Size Bigger Than File Size.", Icon::Information);
      return {0, options.NumberMask};
    }
    const std::uint64_t count = CountPieces(length, pieceSize);
    const std::int16_t pieces = Count16(count, options.SkipThenRange || options.SkipThenTrailer);
    const std::string mask = options.NumberMask + ZeroPerDigit(count);
    if (options.checksum) InitGcrypt();
    NewFolders created;
    created.Create(options.outputFolder);

    const std::string name = options.title.empty() ? PathText(source.filename()) : options.title;
    CopyPlan plan;
    plan.sources.Add(source, state);
    AddPieces(plan, pieceSize, count, options);
    plan.names = {options.outputFolder, name + ".", "", 1};
    if (options.forRecovery) {
      plan.names.width = mask.size();
      // What was encrypted was meant for nobody else.
      plan.rights = options.cipher ? Rights{0600} : WithoutExecute(state.rights);
      plan.existing = Existing::ReplaceScratch;
      plan.cipher = options.cipher;
      const Watch watch = StepsTo(30, count, ui, "PB1", options.barValue);
      Copy(plan, options.SkipThenTrailer ? WithoutBytes(watch) : watch);
      return {pieces, mask};
    }
    plan.names.after = ".sly";
    plan.rights = state.rights;
    plan.numberInSet = [&](const std::string& fileName) {
      return NumberInSet(options.outputFolder, fileName, name);
    };
    plan.list.name = ChecksumNameOf(name);
    if (options.checksum)
      plan.list.line = [&](std::size_t index, const Digest& digest) {
        return ChecksumLine(PieceNameOf(name, static_cast<int>(index) + 1), digest);
      };
    RestoreEarlierSet(plan);
    if (HoldsPieces(plan)) {
      if (!AskYesNo(ui,
                    "Pieces Of An Earlier Split Of " + name + " Are In " +
                        FolderText(options.outputFolder) + ". Do You Want To Replace Them?",
                    Stakes::Replaces))
        return {0, mask, true};
      plan.existing = Existing::Replace;
    }
    Copy(plan, StepsTo(100, count, ui, "pb", options.barValue));
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
