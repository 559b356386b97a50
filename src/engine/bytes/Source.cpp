#include "engine/bytes/Source.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "engine/base/PathText.h"

namespace slyver {

namespace {

/// An open file.
class OpenFile final : public Source {
 public:
  OpenFile(const std::filesystem::path& path, const FileState& state) : file_(path) {
    file_.ThrowUnlessOpenedAs(state);
  }

  std::uint64_t Length() const override { return file_.Length(); }
  std::unique_ptr<Reader> NewReader() const override { return std::make_unique<FileReader>(file_); }
  std::uint64_t NextData(std::uint64_t offset, std::uint64_t end) const override {
    return file_.NextData(offset, end);
  }
  const SourceFile* File() const override { return &file_; }

 private:
  class FileReader final : public Reader {
   public:
    explicit FileReader(const SourceFile& file) : file_(file) {}
    void Read(std::uint64_t offset, std::span<char> buffer) override { file_.Read(offset, buffer); }
    void ThrowIfChanged() override { file_.ThrowIfChanged(); }

   private:
    const SourceFile& file_;
  };

  SourceFile file_;
};

class Row final : public Source {
 public:
  explicit Row(SourceList files) : files_(std::move(files)) {
    ends_.reserve(files_.Count());
    for (std::uint32_t i = 0; i < files_.Count(); ++i)
      ends_.push_back(Length() + files_.State(i).length);
  }

  std::uint64_t Length() const override { return ends_.empty() ? 0 : ends_.back(); }
  std::unique_ptr<Reader> NewReader() const override { return std::make_unique<RowReader>(*this); }

 private:
  class RowReader final : public Reader {
   public:
    explicit RowReader(const Row& row) : row_(row) {}

    void Read(std::uint64_t offset, std::span<char> buffer) override {
      while (!buffer.empty()) {
        const auto end = std::upper_bound(row_.ends_.begin(), row_.ends_.end(), offset);
        const auto number = static_cast<std::uint32_t>(end - row_.ends_.begin());
        if (!file_ || number != number_) {
          ThrowIfChanged();
          file_ = row_.files_.Open(number);
          number_ = number;
        }
        const auto size =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), *end - offset));
        const std::uint64_t begin = *end - row_.files_.State(number).length;
        file_->File()->Read(offset - begin, buffer.first(size));
        offset += size;
        buffer = buffer.subspan(size);
      }
    }

    void ThrowIfChanged() override {
      if (file_) file_->File()->ThrowIfChanged();
    }

   private:
    const Row& row_;
    std::shared_ptr<const Source> file_;  ///< The open one; null at first.
    std::uint32_t number_ = 0;
  };

  SourceList files_;
  std::vector<std::uint64_t> ends_;  ///< The end of each file in the row.
};

}  // namespace

SourceList::SourceList(std::vector<FileState> states,
                       const std::function<std::string(std::size_t number)>& textOf)
    : states_(std::move(states)) {
  ends_.reserve(states_.size());
  for (std::size_t number = 0; number < states_.size(); ++number) {
    paths_ += textOf(number);
    ends_.push_back(paths_.size());
  }
}

std::uint32_t SourceList::Add(const std::filesystem::path& path, const FileState& state) {
  paths_ += PathText(path);
  ends_.push_back(paths_.size());
  states_.push_back(state);
  return static_cast<std::uint32_t>(ends_.size() - 1);
}

std::uint32_t SourceList::Add(std::shared_ptr<const Source> source) {
  FileState state;
  state.length = state.space = source->Length();
  const std::uint32_t number = Add(std::filesystem::path(), state);
  others_[number] = std::move(source);
  return number;
}

std::shared_ptr<const Source> SourceList::Open(std::uint32_t number) const {
  if (const auto other = others_.find(number); other != others_.end()) return other->second;
  return std::make_shared<OpenFile>(Path(number), State(number));
}

std::filesystem::path SourceList::Path(std::uint32_t number) const {
  const std::size_t begin = number == 0 ? 0 : ends_[number - 1];
  return PathFromText(std::string_view(paths_).substr(begin, ends_[number] - begin));
}

std::uint64_t SourceList::Cut(std::uint32_t number, std::uint64_t begin, std::uint64_t end) const {
  const auto other = others_.find(number);
  return other == others_.end() ? end : other->second->Cut(begin, end);
}

std::shared_ptr<const Source> FilesInARow(SourceList files) {
  return std::make_shared<Row>(std::move(files));
}

}  // namespace slyver
