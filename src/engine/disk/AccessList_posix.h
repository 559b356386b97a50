#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "engine/base/Posix.h"

namespace slyver {

/// A file's access list: what single users and groups may do, besides the owner, the file's group
/// and the others. The middle bits of the mode of a file with a list are the most that any of them
/// and the group may do.
class AccessList {
 public:
  /// Reads the list of an open file. Empty if the file has none, or on an error.
  static AccessList Of(const Descriptor& file);

  /// Reads the list of the file `path`. Empty if it has none, or on an error.
  static AccessList Of(const std::filesystem::path& path);

  /// Reads the list that new files in `folder` inherit. Empty if they inherit none, or on an error.
  static AccessList DefaultOf(const std::filesystem::path& folder);

  bool IsEmpty() const { return entries_.empty(); }

  /// Returns the mode of a file with this list.
  unsigned Mode() const;

  /// Returns what the owner, the group and the others may really do, as bits of a mode.
  unsigned ClassBits() const;

  /// Returns bits of a mode that let nobody do more than this list does, whoever it names: the
  /// group and the others may do only what everybody may.
  unsigned CommonBits() const;

  /// Lets the group and the others do no more than `classBits`, and single users and groups nothing
  /// unless `keepsNamed`. Returns the mode.
  unsigned Narrow(unsigned classBits, bool keepsNamed);

  /// Gives an open file this list; an empty one removes the file's. Returns false with errno set on
  /// an error.
  bool SetOn(const Descriptor& file) const;

 private:
  struct Entry {
    unsigned tag = 0;
    unsigned bits = 0;  ///< As for one class of a mode, 0 to 7.
    std::uint32_t id = 0;
  };
  template <typename Get>
  static AccessList Read(const Get& get);
  unsigned Mask() const;

  std::vector<Entry> entries_;
};

}  // namespace slyver
