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

/// An open source. Consecutive ranges of a file use the same one, so that a file that replaces it
/// meanwhile is not mixed in.
struct OpenSource {
  OpenSource(const CopyPlan& plan, std::uint32_t itsNumber)
      : number(itsNumber), file(plan.sources.Path(itsNumber)) {
    file.ThrowUnlessOpenedAs(plan.sources.State(itsNumber));
  }
  std::uint32_t number;
  SourceFile file;
};

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

/// A slice and its files.
struct Job {
  Slice slice;
  std::shared_ptr<const OpenSource> source;
  std::shared_ptr<OpenTarget> target;
};

/// A copying thread's buffer.
struct Buffer {
  std::vector<char> bytes;
  std::optional<Sha256> sha256;  ///< If digests are computed.

  // `bytes` has the source's bytes from `begin` to `end`.
  std::shared_ptr<const OpenSource> source;
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
  bool checked = false;  ///< The source had not changed after they were read.
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
        targets_(plan),
        digests_(plan.list.line ? plan.ranges.size() : 0),
        cursor_(plan),
        sharing_(targets_.SharingThere()) {
    // Starting a thread would take longer than the copy.
    if (plan.SpaceNeeded(sharing_) < worthAThread) {
      threads_ = plan.Flushes() ? 1 : 0;
      return;
    }
    const bool small = bytesTotal_ / plan.ranges.size() < smallRange;
    // For small ranges, creating and committing files takes longer than copying.
    namesApart_ = small && targets_.AreNamedApart();
    threads_ = !plan.expectedOfAll && (!small || namesApart_) ? 2 : 1;
  }

  std::vector<std::size_t> Run() {
    const auto report = [this] { Report(); };
    RunOnThreads(
        threads_, [this](const Tick& between) { Work(between); }, report);
    Report();
    Ending ending = HasFailed() ? Ending::Failed : stop_ ? Ending::Cancelled : Ending::Copied;
    std::vector<std::size_t> wrong;
    if (ending == Ending::Copied) wrong = WrongRanges();
    if (!wrong.empty()) ending = Ending::Failed;
    // Renaming and deleting may take long too, so keep the window responsive.
    const bool takesLong = threads_ > 0 || ending != Ending::Copied;
    RunOnThreads(
        takesLong ? 1 : 0, [&](const Tick&) { End(ending); }, report);
    const Lock lock(failureMutex_);
    if (failure_) std::rethrow_exception(failure_);
    if (ending == Ending::Cancelled) throw Cancelled{};
    return wrong;
  }

 private:
  enum class Ending { Copied, Failed, Cancelled };

  void Report() {
    try {
      if (!watch_({rangesStarted_, bytesDone_, bytesTotal_})) stop_ = true;
    } catch (...) {
      Stop(std::current_exception());
    }
  }

  void Stop(std::exception_ptr failure) EXCLUDES(failureMutex_) {
    const Lock lock(failureMutex_);
    stop_ = true;
    if (!failure_) failure_ = std::move(failure);
  }

  void Work(const Tick& between) {
    if (namesApart_ && hasCopier_.exchange(true))
      NameAll();
    else
      CopyAll(between);
  }

  void CopyAll(const Tick& between) {
    Batch batch;
    try {
      Buffer buffer;
      buffer.bytes.resize(bufferSize);
      if (plan_.LooksAtBytes()) buffer.sha256.emplace();
      while (const std::optional<Job> job = Next()) {
        if (job->slice.cipher != nullptr)
          ConvertSlice(*job, buffer, between);
        else if (!Share(*job))
          CopySlice(*job, buffer, between);
        between();
        if (stop_) break;
        if (plan_.TakesDigests()) TakeDigest(job->slice.range, buffer.sha256->Finish());
        const std::uint64_t share = job->slice.targetLength + (job->slice.beginsRange ? 1 : 0);
        if (job->target->left.fetch_sub(share) != share) continue;
        batch.push_back(job->target);
        if (!namesApart_ || (batch.size() == batchSize && !handover_.Give(batch))) Name(batch);
      }
      if (plan_.expectedOfAll && !stop_ && buffer.sha256->Finish() != *plan_.expectedOfAll) {
        const Lock lock(wrongMutex_);
        wrong_.push_back(plan_.ranges.size());
      }
    } catch (...) {
      Stop(std::current_exception());
    }
    Name(batch);
    if (namesApart_) Name(batch = handover_.Close());
  }

  /// Commits and closes targets.
  void Name(Batch& batch) {
    try {
      for (const std::shared_ptr<OpenTarget>& target : batch)
        targets_.Complete(target->number, *target->file);
    } catch (...) {
      Stop(std::current_exception());
    }
    batch.clear();
  }

  void NameAll() {
    for (Batch batch = handover_.Take(); !batch.empty(); batch = handover_.Take()) Name(batch);
  }

  std::optional<Job> Next() EXCLUDES(nextMutex_) {
    const Lock lock(nextMutex_);
    if (stop_) return std::nullopt;
    const std::optional<Slice> slice = cursor_.Next(sharing_);
    if (!slice) return std::nullopt;
    if (!target_ || target_->number != slice->target)
      target_ = std::make_shared<OpenTarget>(targets_, plan_, slice->target);
    if (!source_ || source_->number != slice->source)
      source_ = std::make_shared<OpenSource>(plan_, slice->source);
    if (slice->beginsRange) ++rangesStarted_;
    return Job{*slice, source_, target_};
  }

  /// Clones a slice; false if it must be copied. After an error nothing more is cloned.
  bool Share(const Job& job) EXCLUDES(nextMutex_) {
    const Slice& slice = job.slice;
    if (!slice.shared) return false;
    const bool shared =
        job.target->file->Share(targets_.SharingThere(), job.source->file, slice.sourceOffset,
                                slice.targetOffset, slice.length);
    if (shared) {
      bytesDone_ += slice.length;
      job.source->file.ThrowIfChanged();
    } else {
      const Lock lock(nextMutex_);
      sharing_ = {};
    }
    return shared;
  }

  void CopySlice(const Job& job, Buffer& buffer, const Tick& between) {
    const Slice& slice = job.slice;
    for (std::uint64_t done = 0; done < slice.length && !stop_; between()) {
      const std::uint64_t data = SkipHole(job, done);
      if (buffer.sha256) buffer.sha256->AddZeros(data - done);
      bytesDone_ += data - done;
      if (data > done) buffer.checked = false;
      done = data;
      if (done == slice.length) break;
      const std::span<const char> part = Read(job, done, buffer);
      if (buffer.sha256) buffer.sha256->Add(part);
      job.target->file->Write(slice.targetOffset + done, part);
      done += part.size();
      bytesDone_ += part.size();
    }
    if (stop_ || buffer.checked) return;
    job.source->file.ThrowIfChanged();
    buffer.checked = true;
  }

  /// Returns bytes of the slice from `done` on; reads them unless they are in the buffer.
  std::span<const char> Read(const Job& job, std::uint64_t done, Buffer& buffer) const {
    const Slice& slice = job.slice;
    const std::uint64_t offset = slice.sourceOffset + done;
    if (job.source != buffer.source || offset < buffer.begin || offset >= buffer.end) {
      const auto size = static_cast<std::size_t>(
          std::min<std::uint64_t>(buffer.bytes.size(), slice.length - done + LengthAfter(slice)));
      job.source->file.Read(offset, std::span(buffer.bytes).first(size));
      buffer.source = job.source;
      buffer.begin = offset;
      buffer.end = offset + size;
      buffer.checked = false;
    }
    const std::uint64_t left = std::min(buffer.end - offset, slice.length - done);
    return std::span<const char>(buffer.bytes)
        .subspan(static_cast<std::size_t>(offset - buffer.begin), static_cast<std::size_t>(left));
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

  void ConvertSlice(const Job& job, Buffer& its, const Tick& between) {
    const Slice& slice = job.slice;
    std::vector<char>& buffer = its.bytes;
    its.source.reset();
    std::uint64_t chunk = slice.firstChunk;
    std::uint64_t written = 0;
    for (std::uint64_t done = 0; done < slice.length && !stop_; between()) {
      const auto size = static_cast<std::size_t>(
          std::min<std::uint64_t>(slice.cipher->SourceChunk(), slice.length - done));
      job.source->file.Read(slice.sourceOffset + done, std::span(buffer).first(size));
      done += size;
      const bool isLast = slice.endsRange && done == slice.length;
      const std::size_t converted = slice.cipher->Convert(chunk++, isLast, buffer, size);
      job.target->file->Write(slice.targetOffset + written, std::span(buffer).first(converted));
      written += converted;
      bytesDone_ += size;
    }
    if (!stop_) job.source->file.ThrowIfChanged();
  }

  /// Returns the offset in the slice after a hole at `done`. The target gets the hole too. A hole
  /// at its end needs the last byte written, to set the length.
  static std::uint64_t SkipHole(const Job& job, std::uint64_t done) {
    const Slice& slice = job.slice;
    const std::uint64_t next =
        job.source->file.NextData(slice.sourceOffset + done, slice.sourceOffset + slice.length) -
        slice.sourceOffset;
    const std::uint64_t end = job.target->length;
    if (next > done && slice.targetOffset + next == end)
      job.target->file->Write(end - 1, std::string_view("\0", 1));
    return next;
  }

  /// Renames the remaining targets into place, or rolls back.
  void End(Ending ending) EXCLUDES(nextMutex_, failureMutex_) {
    {
      const Lock lock(nextMutex_);
      source_.reset();
      target_.reset();
    }
    try {
      if (ending == Ending::Copied) targets_.Finish(digests_);
    } catch (...) {
      Stop(std::current_exception());
    }
    targets_.CleanUp(ending == Ending::Cancelled);
  }

  void TakeDigest(std::size_t range, const Digest& digest) EXCLUDES(wrongMutex_) {
    if (!digests_.empty()) digests_[range] = digest;
    if (range >= plan_.expected.size() || plan_.expected[range] == digest) return;
    const Lock lock(wrongMutex_);
    wrong_.push_back(range);
  }

  std::vector<std::size_t> WrongRanges() EXCLUDES(wrongMutex_) {
    const Lock lock(wrongMutex_);
    std::sort(wrong_.begin(), wrong_.end());
    return wrong_;
  }

  bool HasFailed() EXCLUDES(failureMutex_) {
    const Lock lock(failureMutex_);
    return failure_ != nullptr;
  }

  const CopyPlan& plan_;
  const Watch& watch_;
  const std::uint64_t bytesTotal_;
  TargetSet targets_;
  /// Of all ranges, for a list. Each is written by the thread that copies it.
  std::vector<Digest> digests_;

  bool namesApart_ = false;  ///< One thread copies and the other commits.
  unsigned threads_ = 0;     ///< 0 to copy on the calling thread.
  std::atomic<bool> hasCopier_ = false;
  Handover handover_;
  std::atomic<bool> stop_ = false;
  std::atomic<std::size_t> rangesStarted_ = 0;
  std::atomic<std::uint64_t> bytesDone_ = 0;

  Mutex nextMutex_;
  SliceCursor cursor_ GUARDED_BY(nextMutex_);
  Sharing sharing_ GUARDED_BY(nextMutex_);  ///< Empty after cloning has failed.
  std::shared_ptr<const OpenSource> source_ GUARDED_BY(nextMutex_);
  std::shared_ptr<OpenTarget> target_ GUARDED_BY(nextMutex_);

  Mutex wrongMutex_;
  std::vector<std::size_t> wrong_ GUARDED_BY(wrongMutex_);  ///< Ranges with a wrong digest.

  Mutex failureMutex_;
  std::exception_ptr failure_ GUARDED_BY(failureMutex_);
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
