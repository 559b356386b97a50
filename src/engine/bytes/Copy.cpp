#include "engine/bytes/Copy.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/base/FileError.h"
#include "engine/base/Mutex.h"
#include "engine/base/Workers.h"
#include "engine/bytes/TargetSet.h"

namespace slyver {

namespace {

constexpr std::size_t bufferSize = std::size_t{128} * 1024;
constexpr std::uint64_t worthAThread = std::uint64_t{1} * 1024 * 1024;
constexpr std::uint64_t smallRange = std::uint64_t{64} * 1024;

/// An open target.
struct OpenTarget {
  OpenTarget(TargetSet& targets, const CopyPlan& plan, std::size_t itsNumber)
      : number(itsNumber),
        length(plan.Length(itsNumber)),
        file(targets.Begin(itsNumber)),
        left(length + plan.rangeEnds[itsNumber] - plan.FirstRange(itsNumber)) {}
  std::size_t number;
  std::uint64_t length;
  std::shared_ptr<TargetFile> file;
  std::atomic<std::uint64_t> left;  ///< Bytes to write, plus ranges to start.
};

/// A slice, its open source and target.
struct Job {
  Slice slice;
  std::shared_ptr<const Source> source;
  std::shared_ptr<OpenTarget> target;
};

/// Gives slices to the copying threads, in order.
class Feed {
 public:
  Feed(const CopyPlan& plan, TargetSet& targets)
      : plan_(plan), targets_(targets), cursor_(plan), sharing_(targets.SharingThere()) {}

  /// Returns the next slice; `nullopt` after the last one. Opens its files. Consecutive ranges of a
  /// file use the same open one, so that a file that replaces it meanwhile is not mixed in.
  std::optional<Job> Next() EXCLUDES(mutex_) {
    const Lock lock(mutex_);
    const std::optional<Slice> slice = cursor_.Next(sharing_);
    if (!slice) return std::nullopt;
    if (!target_ || target_->number != slice->target)
      target_ = std::make_shared<OpenTarget>(targets_, plan_, slice->target);
    if (!source_ || sourceNumber_ != slice->source) {
      source_ = plan_.sources.Open(slice->source);
      sourceNumber_ = slice->source;
    }
    if (slice->beginsRange) ++rangesStarted_;
    return Job{*slice, source_, target_};
  }

  std::size_t RangesStarted() const { return rangesStarted_; }

  /// Returns how slices are cloned that are marked as shared.
  const Sharing& SharingThere() const { return targets_.SharingThere(); }

  /// Gives no more slices to clone.
  void StopSharing() EXCLUDES(mutex_) {
    const Lock lock(mutex_);
    sharing_ = {};
  }

  /// Closes the files, so that they can be renamed.
  void Close() EXCLUDES(mutex_) {
    const Lock lock(mutex_);
    source_.reset();
    target_.reset();
  }

 private:
  const CopyPlan& plan_;
  TargetSet& targets_;
  std::atomic<std::size_t> rangesStarted_ = 0;

  Mutex mutex_;
  SliceCursor cursor_ GUARDED_BY(mutex_);
  Sharing sharing_ GUARDED_BY(mutex_);  ///< Empty after cloning has failed.
  std::shared_ptr<const Source> source_ GUARDED_BY(mutex_);
  std::uint32_t sourceNumber_ GUARDED_BY(mutex_) = 0;
  std::shared_ptr<OpenTarget> target_ GUARDED_BY(mutex_);
};

/// What all threads of a copy know.
struct Shared {
  std::atomic<bool> stop = false;
  std::atomic<std::uint64_t> bytesDone = 0;
};

/// Copies slices on one thread.
class Mover {
 public:
  Mover(const CopyPlan& plan, Feed& feed, Shared& shared, const Tick& between)
      : plan_(plan), feed_(feed), shared_(shared), between_(between), buffer_(bufferSize) {
    if (plan.LooksAtBytes()) sha256_.emplace();
  }

  /// Copies a slice, or less if it is to stop.
  void Move(const Job& job) {
    if (!Share(job)) CopySlice(job);
    between_();
  }

  /// Returns the digest of the bytes copied since the last call.
  Digest FinishDigest() { return sha256_->Finish(); }

 private:
  /// Clones a slice; false if it must be copied. After an error nothing more is cloned.
  bool Share(const Job& job) {
    const Slice& slice = job.slice;
    if (!slice.shared) return false;
    const bool shared =
        job.target->file->Share(feed_.SharingThere(), *job.source->File(), slice.sourceOffset,
                                slice.targetOffset, slice.length);
    if (shared) {
      shared_.bytesDone += slice.length;
      job.source->File()->ThrowIfChanged();
    } else {
      feed_.StopSharing();
    }
    return shared;
  }

  void CopySlice(const Job& job) {
    const Slice& slice = job.slice;
    if (job.source != source_) {
      reader_ = nullptr;  // It must not outlive its source.
      source_ = job.source;
      reader_ = source_->NewReader();
      begin_ = end_ = 0;
      checked_ = false;
    }
    for (std::uint64_t done = 0; done < slice.length && !shared_.stop; between_()) {
      const std::uint64_t data = SkipHole(job, done);
      if (sha256_) sha256_->AddZeros(data - done);
      shared_.bytesDone += data - done;
      if (data > done) checked_ = false;
      done = data;
      if (done == slice.length) break;
      const std::span<const char> part = Read(slice, done);
      if (sha256_) sha256_->Add(part);
      job.target->file->Write(slice.targetOffset + done, part);
      done += part.size();
      shared_.bytesDone += part.size();
    }
    if (shared_.stop || checked_) return;
    reader_->ThrowIfChanged();
    checked_ = true;
  }

  /// Returns bytes of the slice from `done` on; reads them unless they are in the buffer.
  std::span<const char> Read(const Slice& slice, std::uint64_t done) {
    const std::uint64_t offset = slice.sourceOffset + done;
    if (offset < begin_ || offset >= end_) {
      const std::uint64_t most =
          std::min<std::uint64_t>(buffer_.size(), slice.length - done + LengthAfter(slice));
      const std::uint64_t end = source_->Cut(offset, offset + most);
      reader_->Read(offset, std::span(buffer_).first(static_cast<std::size_t>(end - offset)));
      begin_ = offset;
      end_ = end;
      checked_ = false;
    }
    const std::uint64_t left = std::min(end_ - offset, slice.length - done);
    return std::span<const char>(buffer_).subspan(static_cast<std::size_t>(offset - begin_),
                                                  static_cast<std::size_t>(left));
  }

  /// Returns the length of the ranges to read together with a small one: those that follow it in
  /// its source. 0 for a big range, since the next may be another thread's.
  std::uint64_t LengthAfter(const Slice& slice) const {
    const ByteRange* const last = &plan_.ranges.back();
    const ByteRange* range = &plan_.ranges[slice.range];
    if (range->length >= smallRange) return 0;
    std::uint64_t length = 0;
    for (; range < last && length < bufferSize && range[1].source == range->source &&
           range[1].offset == range->offset + range->length;
         ++range)
      length += range[1].length;
    return length;
  }

  /// Returns the offset in the slice after a hole at `done`. The target gets the hole too. A hole
  /// at its end needs the last byte written, to set the length.
  static std::uint64_t SkipHole(const Job& job, std::uint64_t done) {
    const Slice& slice = job.slice;
    const std::uint64_t next =
        job.source->NextData(slice.sourceOffset + done, slice.sourceOffset + slice.length) -
        slice.sourceOffset;
    const std::uint64_t end = job.target->length;
    if (next > done && slice.targetOffset + next == end)
      job.target->file->Write(end - 1, std::string_view("\0", 1));
    return next;
  }

  const CopyPlan& plan_;
  Feed& feed_;
  Shared& shared_;
  const Tick& between_;
  std::optional<Sha256> sha256_;  ///< If digests are computed.

  std::shared_ptr<const Source> source_;
  std::unique_ptr<Reader> reader_;
  // The buffer has the source's bytes from `begin_` to `end_`.
  std::vector<char> buffer_;
  std::uint64_t begin_ = 0;
  std::uint64_t end_ = 0;
  bool checked_ = false;  ///< The source had not changed after they were read.
};

/// Targets whose bytes are all written.
using Batch = std::vector<std::shared_ptr<OpenTarget>>;
constexpr std::size_t batchSize = 32;

/// Passes batches from the copying thread to the committing one.
class Handover {
 public:
  /// Passes a batch; false if the last one has not been taken yet.
  bool Give(Batch& batch) {
    const Lock lock(mutex_);
    if (!batch_.empty()) return false;
    batch_.swap(batch);
    changed_.notify_one();
    return true;
  }

  /// Waits for the next batch; an empty one is the end.
  Batch Take() {
    const Lock lock(mutex_);
    while (batch_.empty() && !closed_) changed_.wait(mutex_);
    return std::exchange(batch_, {});
  }

  /// Ends the batches. Returns the last one if it was not taken: there may be no other thread.
  Batch Close() {
    const Lock lock(mutex_);
    closed_ = true;
    changed_.notify_one();
    return std::exchange(batch_, {});
  }

 private:
  Mutex mutex_;
  std::condition_variable_any changed_;
  Batch batch_ GUARDED_BY(mutex_);
  bool closed_ GUARDED_BY(mutex_) = false;
};

/// One run of Copy().
class Copying {
 public:
  Copying(const CopyPlan& plan, const Watch& watch)
      : plan_(plan),
        watch_(watch),
        bytesTotal_(plan.TotalLength()),
        targets_(TargetSet::Start(plan)),
        feed_(plan, *targets_),
        digests_(plan.TakesDigests() ? plan.ranges.size() : 0) {
    // Starting a thread would take longer than the copy.
    if (plan.SpaceNeeded(targets_->SharingThere()) < worthAThread) {
      threads_ = plan.Flushes() ? 1 : 0;
      return;
    }
    const bool small = bytesTotal_ / plan.ranges.size() < smallRange;
    // For small ranges, creating and committing files takes longer than copying.
    namesApart_ = small && targets_->AreNamedApart();
    threads_ = !plan.expectedOfAll && (!small || namesApart_) ? 2 : 1;
  }

  std::vector<std::size_t> Run() {
    Try(threads_, [this](unsigned worker, const Tick& between) {
      try {
        if (namesApart_ && worker == 1)
          NameAll();
        else
          CopyAll(between);
      } catch (...) {
        shared_.stop = true;
        throw;
      }
    });
    Report();
    const bool cancelled = !failure_ && shared_.stop;
    std::vector<std::size_t> wrong =
        failure_ || cancelled ? std::vector<std::size_t>{} : WrongRanges();
    const bool copied = !failure_ && !cancelled && wrong.empty();
    // Renaming and deleting may take long too, so keep the window responsive.
    Try(threads_ > 0 || !copied ? 1 : 0, [&](unsigned, const Tick&) { End(copied, cancelled); });
    if (failure_) std::rethrow_exception(failure_);
    if (cancelled) throw Cancelled{};
    return wrong;
  }

 private:
  /// Runs `work` on threads and reports meanwhile; keeps the first exception.
  template <typename Work>
  void Try(unsigned threads, const Work& work) {
    try {
      RunOnThreads(threads, work, [this] { Report(); });
    } catch (...) {
      if (!failure_) failure_ = std::current_exception();
    }
  }

  void Report() {
    try {
      if (!watch_({feed_.RangesStarted(), shared_.bytesDone, bytesTotal_})) shared_.stop = true;
    } catch (...) {
      shared_.stop = true;
      if (!failure_) failure_ = std::current_exception();
    }
  }

  void CopyAll(const Tick& between) {
    Batch batch;
    std::exception_ptr failure;
    try {
      CopyInto(batch, between);
    } catch (...) {
      shared_.stop = true;
      failure = std::current_exception();
    }
    Batch last = namesApart_ ? handover_.Close() : Batch{};
    Name(last);
    Name(batch);
    if (failure) std::rethrow_exception(failure);
  }

  /// Copies slices. `batch` receives complete targets that have not been committed.
  void CopyInto(Batch& batch, const Tick& between) {
    Mover mover(plan_, feed_, shared_, between);
    while (!shared_.stop) {
      const std::optional<Job> job = feed_.Next();
      if (!job) break;
      mover.Move(*job);
      if (shared_.stop) return;
      if (plan_.TakesDigests()) digests_[job->slice.range] = mover.FinishDigest();
      const std::uint64_t share = job->slice.length + (job->slice.beginsRange ? 1 : 0);
      if (job->target->left.fetch_sub(share) != share) continue;
      batch.push_back(job->target);
      if (!namesApart_ || (batch.size() == batchSize && !handover_.Give(batch))) Name(batch);
    }
    if (plan_.expectedOfAll) ofAll_ = mover.FinishDigest();
  }

  /// Commits and closes targets.
  void Name(Batch& batch) {
    for (const std::shared_ptr<OpenTarget>& target : batch)
      targets_->Complete(target->number, *target->file);
    batch.clear();
  }

  void NameAll() {
    for (Batch batch = handover_.Take(); !batch.empty(); batch = handover_.Take()) Name(batch);
  }

  std::vector<std::size_t> WrongRanges() const {
    std::vector<std::size_t> wrong;
    for (std::size_t i = 0; i < plan_.expected.size(); ++i)
      if (digests_[i] != plan_.expected[i]) wrong.push_back(i);
    if (plan_.expectedOfAll && ofAll_ != *plan_.expectedOfAll) wrong.push_back(plan_.ranges.size());
    return wrong;
  }

  /// Renames the remaining targets into place, or rolls back.
  void End(bool copied, bool cancelled) {
    feed_.Close();
    std::exception_ptr failure;
    try {
      if (copied) targets_->Finish(digests_);
    } catch (...) {
      failure = std::current_exception();
    }
    targets_->CleanUp(cancelled);
    if (failure) std::rethrow_exception(failure);
  }

  const CopyPlan& plan_;
  const Watch& watch_;
  const std::uint64_t bytesTotal_;
  const std::unique_ptr<TargetSet> targets_;
  Feed feed_;
  Shared shared_;
  Handover handover_;

  // Each digest is written by the thread that copies the range, and read when all have ended.
  std::vector<Digest> digests_;
  Digest ofAll_ = {};

  bool namesApart_ = false;     ///< One thread copies and the other commits.
  unsigned threads_ = 0;        ///< 0 to copy on the calling thread.
  std::exception_ptr failure_;  ///< Of the calling thread and of the first worker that has failed.
};

}  // namespace

std::vector<std::size_t> Copy(const CopyPlan& plan, const Watch& watch) {
  for (const ByteRange& range : plan.ranges) {
    const std::uint64_t length = plan.sources.State(range.source).length;
    if (range.length > length || range.offset > length - range.length)
      throw FileError(plan.sources.Path(range.source), "The file is too short");
  }
  return Copying(plan, watch).Run();
}

}  // namespace slyver
