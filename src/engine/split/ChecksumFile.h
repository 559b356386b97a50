#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/bytes/Sha256.h"
#include "engine/disk/SourceFile.h"

namespace slyver {

/// Returns the name of the checksum file of the split of `name`.
std::string ChecksumNameOf(std::string_view name);

/// Returns a checksum file's line for the file `name`, with its end, as `sha256sum` writes it.
std::string ChecksumLine(std::string_view name, const Digest& digest);

/// Returns `name` for a line of its own. A backslash before it marks escaped backslashes and line
/// feeds.
std::string NameOnALine(std::string_view name);

/// The contents of a checksum file.
struct Checksums {
  enum class Kind {
    None,           ///< Missing, or for the whole file alone.
    NotUnderstood,  ///< Not a regular file, or not a list of pieces 1 to n of this split.
    Understood
  };
  Kind kind = Kind::None;
  std::vector<Digest> digests = {};    ///< Of pieces 1 to n, if understood.
  std::optional<Digest> ofWhole = {};  ///< Of the whole file, if the list has nothing else.
  FileState state = {};                ///< The file's state when it was read, if understood.
};

/// Parses the untrusted text of a checksum file, in parts of any length. Accepts lines of
/// `sha256sum` (text, binary or --tag) in any order, also repeated, with LF or CR LF, "./" before
/// names and a byte-order mark. Ignores empty lines and lines that begin with "#".
class ChecksumReader {
 public:
  /// `origName` is the name of the file that was split.
  explicit ChecksumReader(std::string_view origName) : origName_(origName) {}

  /// Adds the next bytes; false once the text is not understood.
  bool Add(std::string_view bytes);

  /// Returns the contents of the whole text.
  Checksums Finish();

 private:
  bool TakeLine(std::string_view line);
  bool TakeName(std::string_view name, const Digest& digest);

  std::string origName_;
  bool atStart_ = true;
  std::string line_;  ///< The start of an incomplete line.
  std::vector<Digest> digests_;
  std::vector<bool> known_;  ///< True for each piece with a digest.
  std::size_t count_ = 0;    ///< The number of pieces with a digest.
  std::optional<Digest> ofWhole_;
  bool understood_ = true;
};

/// Reads the checksum file of the split of `origName` in `folder`, up to 32 MiB. Follows no link.
/// Throws FileError if it cannot be read.
Checksums ReadChecksumFile(const std::filesystem::path& folder, std::string_view origName);

}  // namespace slyver
