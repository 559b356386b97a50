#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "engine/base/Posix.h"

namespace slyver {

/// A file's POSIX access list: rights of single users and groups, besides owner, group and others.
/// With a list, the group bits of the mode are the mask: the most that any of them may do.
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

  /// Returns the effective rights of owner, group and others, as bits of a mode.
  unsigned ClassBits() const;

  /// Returns bits of a mode that grant nobody more than this list: group and others get only what
  /// everybody has.
  unsigned CommonBits() const;

  /// Limits group and others to `classBits`, and removes the rights of single users and groups
  /// unless `keepsNamed`. Returns the mode.
  unsigned Narrow(unsigned classBits, bool keepsNamed);

  /// Sets this list on an open file; an empty one removes the file's. Returns false with errno set
  /// on an error.
  bool SetOn(const Descriptor& file) const;

 private:
  struct Entry {
    unsigned tag = 0;
    unsigned bits = 0;  ///< 0 to 7, as in a mode.
    std::uint32_t id = 0;
  };
  template <typename Get>
  static AccessList Read(const Get& get);
  unsigned Mask() const;

  std::vector<Entry> entries_;
};

}  // namespace slyver
