#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "engine/bytes/CopyPlan.h"

namespace slyver {

/// How far a copy has come.
struct CopyProgress {
  std::size_t rangesStarted = 0;
  std::uint64_t bytesDone = 0;
  std::uint64_t bytesTotal = 0;
};

/// Receives the progress about twenty times a second, and once when all is copied, on the calling
/// thread. Returns false to stop the copy; an exception stops it too and is rethrown. Results are
/// ignored while files are renamed or deleted at the end.
using Watch = std::function<bool(const CopyProgress&)>;

/// Copies the plan's ranges into its targets. All big data moves here.
///
/// Targets are renamed into place when they are complete, the first one last: if the first exists,
/// all exist. The first is also locked first, so that a second program that writes the same files
/// fails early. An earlier set stays until the new one is complete and flushed, and is restored if
/// the exchange fails.
///
/// Two threads copy, each with a small buffer, since one reads while the other writes. Of many
/// small targets one thread copies and the other renames. Less than 1 MiB without a flush is copied
/// on this thread, as is everything if the system starts no thread.
///
/// Digests are computed from the bytes that are written. Returns the ranges whose digests are not
/// those expected, in ascending order; for the digest of all ranges together, their number. If
/// there are any, no target is renamed into place.
///
/// Throws FileError if a file cannot be read or written, a source is not in its state, or what a
/// source throws; SpaceError if the disk is full. Then complete targets of a new set stay, and an
/// earlier set is unchanged. Throws Cancelled if `watch` returns false; then no target stays.
std::vector<std::size_t> Copy(const CopyPlan& plan, const Watch& watch);

}  // namespace slyver
