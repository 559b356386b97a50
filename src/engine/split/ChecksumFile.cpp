#include "engine/split/ChecksumFile.h"

#include <algorithm>
#include <utility>

#include "engine/base/FileError.h"
#include "engine/base/Gcrypt.h"
#include "engine/base/Numbers.h"
#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"
#include "engine/disk/SourceFile.h"
#include "engine/split/PieceName.h"

namespace slyver {

namespace {

/// Longer than any line, even with every character of its name escaped.
constexpr std::size_t longestLine = 2048;
/// In the system's own units; looking for a longer name fails.
constexpr std::size_t longestName = 255;
constexpr std::uint64_t longestFile = std::uint64_t{32} * 1024 * 1024;

std::string Escaped(std::string_view name) {
  std::string escaped;
  for (const char c : name) escaped += c == '\\' ? "\\\\" : c == '\n' ? "\\n" : std::string(1, c);
  return escaped;
}

std::optional<std::string> Unescaped(std::string_view text) {
  std::string name;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      name += text[i];
      continue;
    }
    constexpr std::string_view escapes = "\\nr";
    const std::size_t which = ++i < text.size() ? escapes.find(text[i]) : std::string_view::npos;
    if (which == std::string_view::npos) return std::nullopt;
    name += "\\\n\r"[which];
  }
  return name;
}

/// Returns the digest that `text` begins with, in either case.
std::optional<Digest> DigestIn(std::string_view text) {
  Digest digest = {};
  if (text.size() < 2 * digest.size()) return std::nullopt;
  for (std::size_t i = 0; i < 2 * digest.size(); ++i) {
    const int value = HexValue(text[i]);
    if (value < 0) return std::nullopt;
    digest[i / 2] = static_cast<std::uint8_t>(digest[i / 2] << 4U | static_cast<unsigned>(value));
  }
  return digest;
}

/// A line's digest and name, which may be escaped.
struct Entry {
  Digest digest;
  std::string_view name;
};

/// Parses a line with the digest before the name.
std::optional<Entry> EntryIn(std::string_view line) {
  const std::optional<Digest> digest = DigestIn(line);
  if (!digest) return std::nullopt;
  line.remove_prefix(2 * digest->size());
  if (!line.starts_with("  ") && !line.starts_with(" *")) return std::nullopt;
  return Entry{*digest, line.substr(2)};
}

constexpr std::string_view tagBegin = "SHA256 (";
constexpr std::string_view tagEnd = ") = ";

/// Parses a line "SHA256 (name) = digest".
std::optional<Entry> TaggedEntry(std::string_view line) {
  const std::size_t end = line.rfind(tagEnd);
  if (end == std::string_view::npos || end < tagBegin.size()) return std::nullopt;
  const std::string_view digits = line.substr(end + tagEnd.size());
  const std::optional<Digest> digest = DigestIn(digits);
  if (!digest || digits.size() != 2 * digest->size()) return std::nullopt;
  return Entry{*digest, line.substr(tagBegin.size(), end - tagBegin.size())};
}

}  // namespace

std::string ChecksumNameOf(std::string_view name) {
  return std::string(name) + ".sha256";
}

std::string ChecksumLine(std::string_view name, const Digest& digest) {
  const std::string escaped = Escaped(name);
  std::string line = escaped == name ? "" : "\\";
  for (const std::uint8_t byte : digest) AppendHex(line, byte, lowerHex);
  return line + "  " + escaped + "\n";
}

std::string NameOnALine(std::string_view name) {
  const std::string escaped = Escaped(name);
  return escaped == name ? escaped : "\\" + escaped;
}

bool ChecksumReader::Add(std::string_view bytes) {
  while (understood_ && !bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    line_ += bytes.substr(0, std::min(end, longestLine + 1));
    understood_ = line_.size() <= longestLine;
    if (!understood_ || end == bytes.size()) break;
    understood_ = TakeLine(line_);
    line_.clear();
    bytes.remove_prefix(end + 1);
  }
  return understood_;
}

bool ChecksumReader::TakeLine(std::string_view line) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (std::exchange(atStart_, false) && line.starts_with(byteOrderMark))
    line.remove_prefix(byteOrderMark.size());
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (line.empty() || line.front() == '#') return true;
  const bool isEscaped = line.front() == '\\';
  if (isEscaped) line.remove_prefix(1);
  const std::optional<Entry> entry = line.starts_with(tagBegin) ? TaggedEntry(line) : EntryIn(line);
  if (!entry) return false;
  std::optional<std::string> name =
      isEscaped ? Unescaped(entry->name) : std::optional<std::string>(entry->name);
  if (name && name->starts_with("./")) name->erase(0, 2);
  return name && TakeName(*name, entry->digest);
}

bool ChecksumReader::TakeName(std::string_view name, const Digest& digest) {
  if (name == origName_) {
    if (!ofWhole_) ofWhole_ = digest;
    return ofWhole_ == digest;
  }
  const auto number = static_cast<std::size_t>(PieceNumberOf(name, origName_));
  if (number == 0 || number > maxCount) return false;
  if (number > known_.size()) {
    known_.resize(number);
    digests_.resize(number);
  }
  if (known_[number - 1]) return digests_[number - 1] == digest;
  known_[number - 1] = true;
  digests_[number - 1] = digest;
  ++count_;
  return true;
}

Checksums ChecksumReader::Finish() {
  if (understood_) understood_ = TakeLine(line_);
  if (understood_ && count_ == 0 && ofWhole_) return {.ofWhole = ofWhole_};
  if (!understood_ || count_ == 0 || count_ < known_.size())
    return {.kind = Checksums::Kind::NotUnderstood};
  return {.kind = Checksums::Kind::Understood, .digests = std::move(digests_)};
}

Checksums ReadChecksumFile(const std::filesystem::path& folder, std::string_view origName) {
  const std::filesystem::path path = folder / PathFromText(ChecksumNameOf(origName));
  if (path.filename().native().size() > longestName || !NameIsTaken(path)) return {};
  if (!IsFileItself(path)) return {.kind = Checksums::Kind::NotUnderstood};
  const SourceFile file(path);
  ChecksumReader reader(origName);
  std::string part;
  for (std::uint64_t done = 0; done < file.Length(); done += part.size()) {
    part.resize(static_cast<std::size_t>(std::min<std::uint64_t>(65536, file.Length() - done)));
    file.Read(done, part);
    if (file.Length() > longestFile || !reader.Add(part))
      return {.kind = Checksums::Kind::NotUnderstood};
  }
  file.ThrowIfChanged();
  Checksums checksums = reader.Finish();
  if (checksums.ofWhole || !checksums.digests.empty()) InitGcrypt();
  checksums.state = file.Opened();
  return checksums;
}

}  // namespace slyver
