#include "engine/system/Files.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <limits>
#include <memory>
#include <mutex>
#include <numeric>
#include <optional>
#include <thread>
#include <vector>

#include "engine/system/Disk.h"
#include "engine/system/FileError.h"
#include "engine/system/PathText.h"

namespace slyver {

namespace {

constexpr std::size_t bufferSize = std::size_t{128} * 1024;
constexpr std::uint64_t sliceLength = std::uint64_t{4} * 1024 * 1024;
constexpr std::uint64_t worthASecondThread = std::uint64_t{1} * 1024 * 1024;
constexpr std::chrono::milliseconds watchInterval{50};

/// Whether a file may take less space than its length.
bool HasHoles(const Output& output) {
  for (std::size_t i = 0; i < output.rangeCount; ++i)
    if (const auto state = output.range(i).state; state && state->sparse) return true;
  return false;
}

/// A file on its way, shared by the threads that write slices of it.
struct Pending {
  Pending(Output what, std::size_t itsNumber)
      : output(std::move(what)),
        number(itsNumber),
        file(output.target, HasHoles(output) ? 0 : output.length, output.existing),
        bytesLeft(output.length) {}

  Output output;
  std::size_t number;
  TargetFile file;
  std::atomic<std::uint64_t> bytesLeft;
};

/// What a thread copies at a time: a part of one range.
struct Slice {
  std::shared_ptr<Pending> pending;
  std::shared_ptr<const SourceFile> source;
  std::uint64_t sourceOffset = 0;
  std::uint64_t targetOffset = 0;
  std::uint64_t length = 0;
};

/// One call of WriteOutputs: hands out the slices in order and takes the files over as they become
/// complete.
class Copy {
 public:
  Copy(std::size_t count, const std::function<Output(std::size_t)>& output,
       std::uint64_t bytesTotal)
      : count_(count), output_(output), bytesTotal_(bytesTotal) {}

  void Run(const Watch& watch) {
    if (count_ > 0) last_ = std::make_shared<Pending>(output_(count_ - 1), count_ - 1);
    {
      const unsigned threadCount = bytesTotal_ < worthASecondThread ? 1 : 2;
      running_ = threadCount;
      std::vector<std::jthread> threads;
      for (unsigned i = 0; i < threadCount; ++i) threads.emplace_back([this] { Work(); });
      WatchOver(watch);
    }
    if (failure_) std::rethrow_exception(failure_);
    if (cancelled_) {
      RemoveWritten();
      throw Cancelled{};
    }
    if (last_) last_->file.Commit();
  }

 private:
  /// Tells `watch` of the progress until the threads are done.
  void WatchOver(const Watch& watch) {
    std::unique_lock lock(mutex_);
    while (true) {
      const bool done = finished_.wait_for(lock, watchInterval, [this] { return running_ == 0; });
      const CopyProgress progress{rangesStarted_, bytesDone_, bytesTotal_};
      lock.unlock();
      bool goOn = true;
      try {
        goOn = stop_ || watch(progress);
      } catch (...) {
        Stop(std::current_exception());
      }
      lock.lock();
      if (!goOn) stop_ = cancelled_ = true;
      if (done) return;
    }
  }

  void Work() {
    try {
      std::vector<char> buffer(bufferSize);
      while (std::optional<Slice> slice = Next()) {
        CopySlice(*slice, buffer);
        Finish(*slice);
      }
    } catch (...) {
      Stop(std::current_exception());
    }
    const std::lock_guard lock(mutex_);
    --running_;
    finished_.notify_one();
  }

  void Stop(std::exception_ptr failure) {
    const std::lock_guard lock(mutex_);
    stop_ = true;
    if (!failure_) failure_ = std::move(failure);
  }

  void CopySlice(const Slice& slice, std::vector<char>& buffer) {
    for (std::uint64_t done = 0; done < slice.length && !stop_;) {
      const std::uint64_t data = SkipHole(slice, done);
      bytesDone_ += data - done;
      done = data;
      const std::span part(buffer.data(), static_cast<std::size_t>(std::min<std::uint64_t>(
                                              buffer.size(), slice.length - done)));
      if (part.empty()) return;
      slice.source->Read(slice.sourceOffset + done, part);
      slice.pending->file.Write(slice.targetOffset + done, part);
      done += part.size();
      bytesDone_ += part.size();
    }
  }

  /// How much of the slice is done where the next bytes are that take space. What is skipped stays
  /// a hole in the target too, whose last byte is written so that it gets its length.
  static std::uint64_t SkipHole(const Slice& slice, std::uint64_t done) {
    const std::uint64_t next =
        slice.source->NextData(slice.sourceOffset + done, slice.sourceOffset + slice.length) -
        slice.sourceOffset;
    const std::uint64_t targetEnd = slice.pending->output.length;
    if (next > done && slice.targetOffset + next == targetEnd)
      slice.pending->file.Write(targetEnd - 1, std::string_view("\0", 1));
    return next;
  }

  /// Gives the file its name when the slice was its last.
  void Finish(const Slice& slice) {
    if (stop_) return;
    slice.source->ThrowIfChanged();
    if (slice.pending->bytesLeft.fetch_sub(slice.length) == slice.length) Complete(slice.pending);
  }

  void Complete(const std::shared_ptr<Pending>& pending) {
    if (pending == last_) return;
    RemoveOldLast();
    pending->file.Commit();
    const std::lock_guard lock(mutex_);
    written_.push_back(pending->number);
  }

  /// Before any other file is replaced, an old one with the last one's name goes: beside new files
  /// it would make what stands there look whole.
  void RemoveOldLast() {
    const std::lock_guard lock(mutex_);
    const Output& last = last_->output;
    if (last.existing == Existing::Keep) return;
    if (const std::error_code error = RemoveFile(last.target)) throw FileError(last.target, error);
  }

  /// The next slice, or none when all are handed out or the work is to stop.
  std::optional<Slice> Next() {
    const std::lock_guard lock(nextMutex_);
    while (!stop_) {
      if (range_ && rangeDone_ < range_->length) return TakeSlice();
      if (pending_ && nextRange_ < pending_->output.rangeCount) {
        StartRange(pending_->output.range(nextRange_));
      } else {
        if (nextOutput_ == count_) return std::nullopt;
        pending_ = nextOutput_ + 1 == count_
                       ? last_
                       : std::make_shared<Pending>(output_(nextOutput_), nextOutput_);
        ++nextOutput_;
        nextRange_ = 0;
        targetDone_ = 0;
        range_.reset();
        if (pending_->output.length == 0) Complete(pending_);
      }
    }
    return std::nullopt;
  }

  /// Changes nothing unless all goes well: while a failure is on its way to Stop(), the other
  /// thread may come here and must not find a range without its source.
  void StartRange(ByteRange range) {
    std::shared_ptr<const SourceFile> source = OpenSource(range.path);
    if (range.state) source->ThrowUnlessOpenedAs(*range.state);
    if (range.length > source->Length() || range.offset > source->Length() - range.length)
      throw FileError(range.path, "The file is too short");
    source_ = std::move(source);
    range_ = std::move(range);
    rangeDone_ = 0;
    ++nextRange_;
    ++rangesStarted_;
  }

  Slice TakeSlice() {
    Slice slice{pending_, source_, range_->offset + rangeDone_, targetDone_,
                std::min(sliceLength, range_->length - rangeDone_)};
    rangeDone_ += slice.length;
    targetDone_ += slice.length;
    return slice;
  }

  /// Consecutive ranges of one file read from one opening of it, so that a file put in its place
  /// meanwhile cannot mix in.
  std::shared_ptr<const SourceFile> OpenSource(const std::filesystem::path& path) const {
    if (source_ && source_->Path() == path) return source_;
    return std::make_shared<SourceFile>(path);
  }

  void RemoveWritten() const {
    for (const std::size_t number : written_) (void)RemoveFile(output_(number).target);
  }

  const std::size_t count_;
  const std::function<Output(std::size_t)>& output_;
  const std::uint64_t bytesTotal_;
  std::shared_ptr<Pending> last_;  ///< Begun before the threads are, and named after them.

  std::mutex nextMutex_;  ///< Guards what Next() keeps:
  std::size_t nextOutput_ = 0;
  std::shared_ptr<Pending> pending_;
  std::size_t nextRange_ = 0;
  std::optional<ByteRange> range_;
  std::uint64_t rangeDone_ = 0;
  std::uint64_t targetDone_ = 0;
  std::shared_ptr<const SourceFile> source_;

  std::atomic<bool> stop_ = false;
  std::atomic<std::size_t> rangesStarted_ = 0;
  std::atomic<std::uint64_t> bytesDone_ = 0;

  std::mutex mutex_;  ///< Guards all that follows.
  std::condition_variable finished_;
  unsigned running_ = 0;
  std::exception_ptr failure_;
  bool cancelled_ = false;
  std::vector<std::size_t> written_;
};

}  // namespace

void WriteOutputs(std::size_t count, const std::function<Output(std::size_t)>& output,
                  std::uint64_t bytesTotal, const Watch& watch) {
  Copy(count, output, bytesTotal).Run(watch);
}

void Concatenate(std::span<const ByteRange> ranges, const std::filesystem::path& target,
                 Existing existing, const Watch& watch) {
  const std::uint64_t length =
      std::accumulate(ranges.begin(), ranges.end(), std::uint64_t{0},
                      [](std::uint64_t sum, const ByteRange& r) { return sum + r.length; });
  const auto output = [&](std::size_t) {
    return Output{target, length, ranges.size(), [&](std::size_t i) { return ranges[i]; },
                  existing};
  };
  WriteOutputs(1, output, length, watch);
}

FileState StateOf(const std::filesystem::path& path) {
  return SourceFile(path).Opened();
}

std::uint64_t FileLength(const std::filesystem::path& path) {
  return StateOf(path).length;
}

std::string ReadSmallFile(const std::filesystem::path& path) {
  const SourceFile file(path);
  std::string bytes(static_cast<std::size_t>(file.Length()), '\0');
  file.Read(0, bytes);
  return bytes;
}

void WriteSmallFile(const std::filesystem::path& path, std::string_view bytes, Existing existing) {
  TargetFile file(path, bytes.size(), existing);
  file.Write(0, bytes);
  file.Commit();
}

std::filesystem::path FirstFreePath(const std::filesystem::path& folder, const MarkedName& nameOf) {
  std::filesystem::path path = folder / PathFromText(nameOf(""));
  for (int n = 1; NameIsTaken(path); ++n) {
    if (n > std::numeric_limits<std::int16_t>::max()) throw OverflowError();
    path = folder / PathFromText(nameOf("[" + std::to_string(n) + "] "));
  }
  return path;
}

std::filesystem::path MoveToFirstFreePath(const std::filesystem::path& from,
                                          const std::filesystem::path& folder,
                                          const MarkedName& nameOf) {
  std::filesystem::path path;
  do path = FirstFreePath(folder, nameOf);
  while (!MoveToFreeName(from, path));  // Another program may take the name first.
  return path;
}

}  // namespace slyver
