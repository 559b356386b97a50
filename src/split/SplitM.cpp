#include "split/SplitM.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "split/PieceName.h"
#include "system/FileError.h"
#include "system/Files.h"
#include "system/PathText.h"
#include "system/StepProgress.h"

namespace slyver {

namespace {

/// How many pieces of `size` bytes `length` bytes make. Throws OverflowError past 32767.
std::int16_t CountPieces(std::uint64_t length, std::uint64_t size) {
  if (size == 0) throw std::invalid_argument("The piece size must be at least 1 byte.");
  const std::uint64_t count = length / size + (length % size > 0 ? 1 : 0);
  if (count > std::uint64_t{std::numeric_limits<std::int16_t>::max()}) throw OverflowError();
  return static_cast<std::int16_t>(count);
}

std::string ZeroPerDigit(std::int16_t count) {
  std::string mask = std::to_string(count);
  std::fill(mask.begin(), mask.end(), '0');
  return mask;
}

std::string Filled(int number, const std::string& mask) {
  const std::string digits = std::to_string(number);
  return mask.substr(std::min(digits.size(), mask.size())) + digits;
}

void MakeLastLevel(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directory(folder, error);
  if (error) throw FileError(folder, error);
}

/// One cut of a file: how many pieces are written, and which bytes piece `number` (1-based) holds.
struct Cut {
  std::size_t written = 0;
  std::function<ByteRange(int number)> range;
};

Cut CutOf(const std::filesystem::path& source, std::uint64_t length, std::uint64_t size,
          std::int16_t count, const SplitOptions& options) {
  const auto rangeAt = [source, length](std::uint64_t offset, std::uint64_t wanted) {
    return ByteRange{source, offset, std::min(wanted, length - offset)};
  };
  if (options.SkipThenRange || options.SkipThenTrailer) {
    const std::uint64_t wanted = options.SkipThenRange ? options.SecondPieceSize : directoryLength;
    return {1, [=](int) { return rangeAt(size, wanted); }};
  }
  if (options.TwoPieceMode) {
    const std::uint64_t second =
        count == 2 && length % size > 0 ? length % size : options.SecondPieceSize;
    return {2, [=](int number) { return number == 1 ? rangeAt(0, size) : rangeAt(size, second); }};
  }
  return {static_cast<std::size_t>(count), [=](int number) {
            return rangeAt(size * (static_cast<std::uint64_t>(number) - 1), size);
          }};
}

/// Writes the pieces of a cut, piece 1 last.
void WritePieces(const Cut& cut, const std::function<std::filesystem::path(int number)>& nameOf,
                 const Watch& watch) {
  const auto output = [&](std::size_t index) {
    const int number = index + 1 == cut.written ? 1 : static_cast<int>(index) + 2;
    ByteRange range = cut.range(number);
    return Output{nameOf(number), range.length, 1, [range](std::size_t) { return range; }};
  };
  std::uint64_t total = 0;
  for (std::size_t i = 0; i < cut.written; ++i) total += cut.range(static_cast<int>(i) + 1).length;
  WriteOutputs(cut.written, output, total, Existing::Replace, watch);
}

}  // namespace

SplitResult SplitFile(const std::filesystem::path& source, std::uint64_t pieceSize,
                      const SplitOptions& options, Ui& ui) {
  return ShowingErrors(ui, [&]() -> SplitResult {
    const std::uint64_t length = FileLength(source);
    if (length <= pieceSize) {
      ui.Message("Chunk Size Bigger Than File Size.", Icon::Information);
      return {0, options.NumberMask};
    }
    const std::int16_t count = CountPieces(length, pieceSize);
    const std::string mask = options.NumberMask + ZeroPerDigit(count);
    MakeLastLevel(options.outputFolder);

    const std::string name = PathText(source.filename());
    const auto nameOf = [&](int number) {
      return options.outputFolder / PathFromText(options.forRecovery
                                                     ? name + "." + Filled(number, mask)
                                                     : PieceNameOf(name, number));
    };
    const double step = (options.forRecovery ? 30.0 : 100.0) / count;
    const Watch watch = StepProgress(ui, options.forRecovery ? "PB1" : "pb", 0,
                                     [step](double value, std::size_t) { return value + step; });
    WritePieces(CutOf(source, length, pieceSize, count, options), nameOf, watch);
    return {count, mask};
  });
}

ChunkResult ChunkToTemp(const std::filesystem::path& source, std::uint64_t chunkSize,
                        const ChunkOptions& options, Ui& ui) {
  return ShowingErrors(ui, [&]() -> ChunkResult {
    const std::uint64_t length = FileLength(source);
    if (length <= chunkSize) {
      ui.Message("This file cannot be split as filesize is less or equal to maximum chunksize",
                 Icon::None);
      return {};
    }
    const std::int16_t count = CountPieces(length, chunkSize);
    const std::string mask = ZeroPerDigit(count);
    MakeLastLevel(options.folder);

    const std::uint64_t tailSize = options.SmallTailChunks ? directoryLength : chunkSize;
    const std::uint64_t tailLength = length - chunkSize;
    const std::uint64_t tailChunks = tailLength / tailSize + (tailLength % tailSize > 0 ? 1 : 0);
    const Cut cut{
        static_cast<std::size_t>(std::min(1 + tailChunks, static_cast<std::uint64_t>(count))),
        [&](int number) {
          if (number == 1) return ByteRange{source, 0, chunkSize};
          const std::uint64_t offset =
              chunkSize + tailSize * (static_cast<std::uint64_t>(number) - 2);
          return ByteRange{source, offset, std::min(tailSize, length - offset)};
        }};
    const double step = 30.0 / count;
    WritePieces(
        cut, [&](int number) { return options.folder / ("1." + Filled(number, mask) + ".ini"); },
        StepProgress(ui, "PB1", 0, [step](double value, std::size_t) { return value + step; }));
    return {count, mask};
  });
}

}  // namespace slyver
