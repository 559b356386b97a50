#include "engine/split/SplitM.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <stdexcept>

#include "engine/split/PieceName.h"
#include "engine/system/Disk.h"
#include "engine/system/FileError.h"
#include "engine/system/Files.h"
#include "engine/system/PathText.h"
#include "engine/system/StepProgress.h"

namespace slyver {

namespace {

/// How many pieces of `size` bytes `length` bytes make.
std::uint64_t CountPieces(std::uint64_t length, std::uint64_t size) {
  if (size == 0) throw std::invalid_argument("The piece size must be at least 1 byte.");
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

std::string Filled(int number, const std::string& mask) {
  const std::string digits = std::to_string(number);
  return mask.substr(std::min(digits.size(), mask.size())) + digits;
}

/// One cut of a file: how many pieces are written, which bytes piece `number` holds, and the number
/// of the first piece.
struct Cut {
  std::size_t written = 0;
  std::function<ByteRange(int number)> range;
  int first = 1;
};

Cut CutOf(const std::filesystem::path& source, const FileState& state, std::uint64_t size,
          std::uint64_t count, const SplitOptions& options) {
  const std::uint64_t length = state.length;
  const auto rangeAt = [source, state](std::uint64_t offset, std::uint64_t wanted) {
    return ByteRange{source, offset, std::min(wanted, state.length - offset), state};
  };
  if (options.SkipThenRange || options.SkipThenTrailer) {
    const std::uint64_t wanted =
        options.SkipThenRange ? options.SecondPieceSize : options.TrailerSize;
    return {1, [=](int) { return rangeAt(size, wanted); }};
  }
  if (options.TwoPieceMode) {
    const std::uint64_t second =
        count == 2 && length % size > 0 ? length % size : options.SecondPieceSize;
    const auto range = [=](int number) {
      return number == 1 ? rangeAt(0, size) : rangeAt(size, second);
    };
    return {2, range};
  }
  const auto range = [=](int number) {
    return rangeAt(size * (static_cast<std::uint64_t>(number) - 1), size);
  };
  return {static_cast<std::size_t>(count), range};
}

/// Takes the bar from `value` to `end` in `count` steps, one for each piece begun; a bar that
/// stands higher already stays.
Watch StepsTo(double end, std::uint64_t count, Ui& ui, std::string_view bar, double value) {
  const double step = end / static_cast<double>(count);
  return StepProgress(ui, bar, value, [end, step](double now, std::size_t) {
    return std::max(now, std::min(now + step, end));
  });
}

/// Writes the pieces of a cut, the first one last.
void WritePieces(const Cut& cut, const std::function<std::filesystem::path(int number)>& nameOf,
                 Existing firstPiece, const Watch& watch) {
  const auto output = [&](std::size_t index) {
    const int number = cut.first + (index + 1 == cut.written ? 0 : static_cast<int>(index) + 1);
    ByteRange range = cut.range(number);
    return Output{nameOf(number), range.length, 1, [range](std::size_t) { return range; },
                  number == cut.first ? firstPiece : Existing::Replace};
  };
  std::uint64_t total = 0;
  for (int i = 0; i < static_cast<int>(cut.written); ++i) total += cut.range(cut.first + i).length;
  WriteOutputs(cut.written, output, total, watch);
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
    MakeFolder(options.outputFolder);

    const std::string name = options.title.empty() ? PathText(source.filename()) : options.title;
    const auto nameOf = [&](int number) {
      return options.outputFolder / PathFromText(options.forRecovery
                                                     ? name + "." + Filled(number, mask)
                                                     : PieceNameOf(name, number));
    };
    WritePieces(CutOf(source, state, pieceSize, count, options), nameOf, options.firstPiece,
                options.forRecovery ? StepsTo(30, count, ui, "PB1", options.barValue)
                                    : StepsTo(100, count, ui, "pb", options.barValue));
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
    MakeFolder(options.folder);

    const std::uint64_t tailSize = options.SmallTailChunks ? options.TrailerSize : chunkSize;
    const std::uint64_t tailLength = length - chunkSize;
    const auto range = [&](int number) {
      if (number == 1) return ByteRange{source, 0, chunkSize, state};
      const std::uint64_t offset = chunkSize + tailSize * (static_cast<std::uint64_t>(number) - 2);
      return ByteRange{source, offset, std::min(tailSize, length - offset), state};
    };
    const std::uint64_t written = std::min(1 + CountPieces(tailLength, tailSize), count);
    const Cut cut = options.only > 0 ? Cut{1, range, options.only}
                                     : Cut{static_cast<std::size_t>(written), range};
    WritePieces(
        cut, [&](int number) { return options.folder / ("1." + Filled(number, mask) + ".ini"); },
        Existing::Replace, StepsTo(30, count, ui, "PB1", options.barValue));
    return {chunks, mask};
  });
}

}  // namespace slyver
