#include "engine/disk/AccessList_posix.h"

#include <endian.h>
#include <linux/posix_acl.h>
#include <linux/posix_acl_xattr.h>
#include <linux/xattr.h>
#include <sys/xattr.h>

#include <cstring>
#include <string>

namespace slyver {

namespace {

constexpr unsigned allBits = 07;

/// True for an entry of a user or group other than the file's own.
bool IsNamed(unsigned tag) {
  return tag == ACL_USER || tag == ACL_GROUP;
}

}  // namespace

/// Reads a list with `get`, a system call that reads the attribute into a buffer of a given size.
template <typename Get>
AccessList AccessList::Read(const Get& get) {
  std::string bytes;
  ssize_t length = 0;
  // The list may grow between the two calls.
  do {
    length = get(nullptr, 0);
    if (length <= 0) return {};
    bytes.resize(static_cast<std::size_t>(length));
    length = get(bytes.data(), bytes.size());
  } while (length < 0 && errno == ERANGE);
  AccessList list;
  posix_acl_xattr_entry entry = {};
  for (std::size_t at = sizeof(posix_acl_xattr_header);
       std::cmp_less_equal(at + sizeof entry, length); at += sizeof entry) {
    std::memcpy(&entry, bytes.data() + at, sizeof entry);
    list.entries_.push_back({le16toh(entry.e_tag), le16toh(entry.e_perm), le32toh(entry.e_id)});
  }
  return list;
}

AccessList AccessList::Of(const Descriptor& file) {
  return Read([&](void* to, std::size_t size) {
    return fgetxattr(file.Get(), XATTR_NAME_POSIX_ACL_ACCESS, to, size);
  });
}

AccessList AccessList::Of(const std::filesystem::path& path) {
  return Read([&](void* to, std::size_t size) {
    return lgetxattr(path.c_str(), XATTR_NAME_POSIX_ACL_ACCESS, to, size);
  });
}

AccessList AccessList::DefaultOf(const std::filesystem::path& folder) {
  return Read([&](void* to, std::size_t size) {
    return getxattr(folder.c_str(), XATTR_NAME_POSIX_ACL_DEFAULT, to, size);
  });
}

unsigned AccessList::Mask() const {
  for (const Entry& entry : entries_)
    if (entry.tag == ACL_MASK) return entry.bits;
  return allBits;
}

unsigned AccessList::Mode() const {
  unsigned owner = 0;
  unsigned group = 0;
  unsigned others = 0;
  for (const auto& [tag, bits, id] : entries_) {
    if (tag == ACL_USER_OBJ) owner = bits;
    if (tag == ACL_GROUP_OBJ || tag == ACL_MASK) group = bits;  // The mask comes later and wins.
    if (tag == ACL_OTHER) others = bits;
  }
  return owner << 6U | group << 3U | others;
}

unsigned AccessList::ClassBits() const {
  unsigned group = 0;
  for (const Entry& entry : entries_)
    if (entry.tag == ACL_GROUP_OBJ) group = entry.bits & Mask();
  return (Mode() & 0707U) | group << 3U;
}

unsigned AccessList::CommonBits() const {
  unsigned common = allBits;
  for (const auto& [tag, bits, id] : entries_) {
    if (IsNamed(tag) || tag == ACL_GROUP_OBJ) common &= bits & Mask();
    if (tag == ACL_OTHER) common &= bits;
  }
  return (Mode() & 0700U) | common << 3U | common;
}

unsigned AccessList::Narrow(unsigned classBits, bool keepsNamed) {
  const bool groupStays = ((ClassBits() ^ classBits) & 070U) == 0;
  const unsigned group = classBits >> 3U & allBits;
  unsigned used = 0;
  for (Entry& entry : entries_) {
    if (entry.tag == ACL_GROUP_OBJ && !groupStays) entry.bits = group;
    if (entry.tag == ACL_OTHER) entry.bits &= classBits;
    if (IsNamed(entry.tag) && !keepsNamed) entry.bits = 0;
    if (IsNamed(entry.tag) || entry.tag == ACL_GROUP_OBJ) used |= entry.bits;
  }
  // The mask shows as the group's bits, so it should not exceed what anybody has left.
  for (Entry& entry : entries_)
    if (entry.tag == ACL_MASK && !(groupStays && keepsNamed)) entry.bits &= used;
  return Mode();
}

bool AccessList::SetOn(const Descriptor& file) const {
  if (IsEmpty())
    return fremovexattr(file.Get(), XATTR_NAME_POSIX_ACL_ACCESS) == 0 || errno == ENODATA ||
           errno == EOPNOTSUPP;
  const posix_acl_xattr_header header = {htole32(POSIX_ACL_XATTR_VERSION)};
  std::string bytes(sizeof header + entries_.size() * sizeof(posix_acl_xattr_entry), '\0');
  std::memcpy(bytes.data(), &header, sizeof header);
  for (std::size_t at = sizeof header; const auto& [tag, bits, id] : entries_) {
    const posix_acl_xattr_entry entry = {htole16(static_cast<std::uint16_t>(tag)),
                                         htole16(static_cast<std::uint16_t>(bits)), htole32(id)};
    std::memcpy(bytes.data() + at, &entry, sizeof entry);
    at += sizeof entry;
  }
  return fsetxattr(file.Get(), XATTR_NAME_POSIX_ACL_ACCESS, bytes.data(), bytes.size(), 0) == 0;
}

}  // namespace slyver
