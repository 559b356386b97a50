#include "engine/split/Verify.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <limits>
#include <map>
#include <numeric>
#include <span>

#include "engine/base/FileError.h"
#include "engine/base/Mutex.h"
#include "engine/base/PathText.h"
#include "engine/base/Workers.h"
#include "engine/disk/Files.h"
#include "engine/split/ChecksumFile.h"
#include "engine/split/PieceName.h"
#include "engine/split/Pieces.h"

namespace slyver {

namespace {

constexpr std::size_t bufferSize = std::size_t{128} * 1024;

/// Verifies the pieces of one split.
class Verification {
 public:
  Verification(const Pieces& pieces, std::size_t count, Ui& ui)
      : pieces_(pieces), ui_(ui), states_(count, PieceState::Ok), lengths_(count) {}

  /// Writes the results to `verified` and shows errors.
  void Run(const Checksums& checksums, Verified& verified) {
    LookAtNumbers();
    if (!checksums.digests.empty())
      CompareBytes(checksums.digests);
    else if (checksums.ofWhole)
      verified.whole = CompareWhole(*checksums.ofWhole);
    else
      CompareSizes();
    const Lock lock(mutex_);
    for (const auto& [number, cause] : causes_) ui_.Message(cause, Icon::Critical);
    verified.pieces = states_;
  }

 private:
  void LookAtNumbers() {
    const auto look = [this](std::size_t i, const Tick& /*between*/) {
      if (pieces_.Has(i + 1))
        LookAt(i + 1, [&] { lengths_[i] = FileLength(pieces_.PathOf(i + 1)); });
      else
        states_[i] = PieceState::Missing;
    };
    ForEachNumber(states_.size(), ThreadsToLookWith(states_.size()), look,
                  [this] { return ui_.GoOn(); });
    bytesTotal_ = std::accumulate(lengths_.begin(), lengths_.end(), std::uint64_t{0});
  }

  /// Compares lengths: all pieces are as long as the first, the last may be shorter. Pieces in
  /// subfolders may be of another set, so they are not checked.
  void CompareSizes() {
    for (std::size_t i = 1; i < states_.size(); ++i) {
      const bool isLast = i + 1 == states_.size();
      if (states_[i] == PieceState::Ok && states_[0] == PieceState::Ok &&
          (isLast ? lengths_[i] > lengths_[0] : lengths_[i] != lengths_[0]))
        states_[i] = PieceState::Damaged;
    }
    for (const std::size_t number : pieces_.BelowFrom(0))
      if (states_[number - 1] == PieceState::Ok) states_[number - 1] = PieceState::NotChecked;
  }

  void CompareBytes(const std::vector<Digest>& digests) {
    ReadAll(2, [&](std::size_t i, const Tick& between) {
      Sha256 sha256;
      Read(i + 1, sha256, between);
      if (sha256.Finish() != digests[i]) states_[i] = PieceState::Damaged;
    });
  }

  /// Compares the digest of all pieces together. Single pieces are not checked, only read.
  PieceState CompareWhole(const Digest& digest) {
    Sha256 sha256;
    ReadAll(1, [&](std::size_t i, const Tick& between) {
      Read(i + 1, sha256, between);
      states_[i] = PieceState::NotChecked;
    });
    const auto wasRead = [](PieceState state) { return state == PieceState::NotChecked; };
    if (!std::all_of(states_.begin(), states_.end(), wasRead)) return PieceState::NotChecked;
    return sha256.Finish() == digest ? PieceState::Ok : PieceState::Damaged;
  }

  /// Calls `read` for every piece that exists, in ascending order.
  template <typename ReadPiece>
  void ReadAll(unsigned threads, const ReadPiece& read) {
    const auto report = [this] { ui_.SetProgress({"PB1", Percent(), bytesDone_, bytesTotal_}); };
    const auto each = [&](std::size_t i, const Tick& between) {
      if (states_[i] == PieceState::Ok) LookAt(i + 1, [&] { read(i, between); });
    };
    ForEachNumber(states_.size(), threads, each, [&] {
      report();
      return ui_.GoOn();
    });
    report();
  }

  double Percent() const {
    return bytesTotal_ == 0
               ? 100
               : 100 * static_cast<double>(bytesDone_) / static_cast<double>(bytesTotal_);
  }

  /// Adds a piece's bytes to a digest.
  void Read(std::size_t number, Sha256& sha256, const Tick& between) {
    const SourceFile file(pieces_.PathOf(number));
    std::vector<char> buffer(bufferSize);
    for (std::uint64_t done = 0; done < file.Length(); between()) {
      const std::span part(buffer.data(), static_cast<std::size_t>(std::min<std::uint64_t>(
                                              buffer.size(), file.Length() - done)));
      file.Read(done, part);
      sha256.Add(part);
      done += part.size();
      bytesDone_ += part.size();
    }
    file.ThrowIfChanged();
  }

  /// Calls `look` for a piece. On an exception the piece is damaged; keeps the cause.
  template <typename Look>
  void LookAt(std::size_t number, const Look& look) EXCLUDES(mutex_) {
    try {
      look();
    } catch (const std::exception& error) {
      states_[number - 1] = PieceState::Damaged;
      const Lock lock(mutex_);
      causes_[number] = TextFor(error);
    }
  }

  const Pieces& pieces_;
  Ui& ui_;
  std::vector<PieceState> states_;  ///< Each is written by one thread.
  std::vector<std::uint64_t> lengths_;
  std::uint64_t bytesTotal_ = 0;
  std::atomic<std::uint64_t> bytesDone_ = 0;

  Mutex mutex_;
  std::map<std::size_t, std::string> causes_ GUARDED_BY(mutex_);
};

/// Returns the number of pieces expected: the list's, or the highest found or chosen, at least 2.
std::size_t PieceCount(const Checksums& checksums, const Pieces& pieces, int chosen) {
  if (!checksums.digests.empty()) return checksums.digests.size();
  return std::max({std::size_t{2}, pieces.Count(), static_cast<std::size_t>(chosen)});
}

}  // namespace

std::optional<Verified> VerifyPieces(const std::filesystem::path& FullPath, Ui& ui) {
  const std::string PieceName = PathText(FullPath.filename());
  const std::string OrigName = OrigNameOf(PieceName).value_or("");
  const int chosen = PieceNumberOf(PieceName, OrigName);
  if (chosen == 0) {
    ui.Message(PieceName + std::string(isNoPiece), Icon::Critical);
    return std::nullopt;
  }
  const std::filesystem::path folder = FullPath.parent_path();
  const Checksums checksums = ReadChecksumFile(folder, OrigName);
  const std::string list = ChecksumNameOf(OrigName);
  if (checksums.kind == Checksums::Kind::NotUnderstood) {
    ui.Message(list + " Cannot Be Understood.", Icon::Critical);
    return std::nullopt;
  }
  const Pieces pieces(folder, OrigName, ui);
  if (!pieces.AreSingle(ui)) return std::nullopt;

  const std::size_t count = PieceCount(checksums, pieces, chosen);
  Verified verified{.origName = OrigName};
  Verification(pieces, count, ui).Run(checksums, verified);
  const auto bad = static_cast<std::size_t>(
      std::count_if(verified.pieces.begin(), verified.pieces.end(), [](PieceState state) {
        return state == PieceState::Damaged || state == PieceState::Missing;
      }));
  if (bad > 0)
    ui.Message(
        std::to_string(bad) + " Of " + std::to_string(count) + " Pieces Are Damaged Or Missing.",
        Icon::Critical);
  if (verified.whole == PieceState::Damaged) ui.Message(OrigName + " Is Damaged.", Icon::Critical);
  const bool hasNoList = checksums.digests.empty() && !checksums.ofWhole;
  const std::vector<std::size_t> below =
      hasNoList ? pieces.BelowFrom(0) : std::vector<std::size_t>{};
  if (!below.empty()) ui.Message(pieces.WhereAre(below) + ".", Icon::Critical);
  if (hasNoList)
    ui.Message("There Is No Checksum File Of The Pieces. Their Bytes Were Not Checked.",
               Icon::None);
  const std::size_t highest = std::max(pieces.Count(), static_cast<std::size_t>(chosen));
  if (highest > count)
    ui.Message(pieces.NameOf(highest) + " Is Not In " + list + ".", Icon::Critical);
  verified.sound = bad == 0 && below.empty() && highest <= count &&
                   verified.whole.value_or(PieceState::Ok) == PieceState::Ok;
  return verified;
}

}  // namespace slyver
