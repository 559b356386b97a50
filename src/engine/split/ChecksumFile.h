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

/// The name of the checksum file of the split of `name`.
std::string ChecksumNameOf(std::string_view name);

/// The line of a checksum file, with its end, that tells the digest of the file `name`, as
/// `sha256sum` writes it.
std::string ChecksumLine(std::string_view name, const Digest& digest);

/// `name` on a line of its own: where it has a backslash or a line feed these are escaped, and a
/// backslash before it says so.
std::string NameOnALine(std::string_view name);

/// What a checksum file tells.
struct Checksums {
  enum class Kind {
    None,           ///< There is none; or it tells of the whole file alone, not of its pieces.
    NotUnderstood,  ///< It is no file itself, or no list of pieces 1 to n of this split.
    Understood
  };
  Kind kind = Kind::None;
  std::vector<Digest> digests = {};    ///< Of pieces 1 to n, where it is understood.
  std::optional<Digest> ofWhole = {};  ///< Of the whole file, where it tells of that alone.
  FileState state = {};                ///< In which the file was read, where it is understood.
};

/// Reads the text of a checksum file, which may have come from anywhere, in parts of any length.
/// It believes lines as `sha256sum` writes them, as text, as binary or with --tag, with LF or CR
/// LF, in any order, the same one twice, "./" before names, and behind a byte-order mark. Empty
/// lines and those that begin with "#" say nothing.
class ChecksumReader {
 public:
  /// `origName` is the name of the file that was split.
  explicit ChecksumReader(std::string_view origName) : origName_(origName) {}

  /// Takes in the next bytes. False once the text is not understood.
  bool Add(std::string_view bytes);

  /// What the whole text tells.
  Checksums Finish();

 private:
  bool TakeLine(std::string_view line);
  bool TakeName(std::string_view name, const Digest& digest);

  std::string origName_;
  bool atStart_ = true;
  std::string line_;  ///< The beginning of a line whose end is to come.
  std::vector<Digest> digests_;
  std::vector<bool> told_;  ///< Of which pieces.
  std::size_t count_ = 0;   ///< Of pieces told.
  std::optional<Digest> ofWhole_;
  bool understood_ = true;
};

/// Reads the checksum file of the split of `origName` in `folder`, unless it is longer than any
/// such file. Follows no link. Throws FileError where it is a file that cannot be read.
Checksums ReadChecksumFile(const std::filesystem::path& folder, std::string_view origName);

}  // namespace slyver
