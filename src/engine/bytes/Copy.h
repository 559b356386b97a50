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

/// Told of the progress about twenty times a second, and once when all is copied, on the calling
/// thread. Returns false to stop the copy; what it throws stops the copy too and reaches the
/// caller. It goes on being called, unheard, while names are given or files removed.
using Watch = std::function<bool(const CopyProgress&)>;

/// Carries out a plan of one target or more. All big data moves here.
///
/// A target gets its name when it is complete, the first one after all others: where the first
/// stands, all stand. It is also begun first, so that a second program that writes the same files
/// is told so before it touches any. Where an earlier set is replaced, it stays whole until the
/// new one is complete and on the disk, and comes back if the exchange fails.
///
/// Bytes that a cipher changes are changed on the way; what it throws stops the copy.
///
/// Two threads at most copy, each with a small buffer, since one reads while the other writes; of
/// many small targets one copies and the other gives names. Where the system gives no thread, this
/// one does it all, and so it does where less than 1 MiB is to be copied and nothing to be flushed.
///
/// Where the plan wants a list of digests, or expects some, they are computed from the very bytes
/// that are written; one of all ranges together is computed by one thread. Returns the ranges whose
/// digests are not those expected, in ascending order, or where all together are not, their number;
/// where there are any, no target has got its name.
///
/// Throws FileError when a file cannot be read or written, or a source is not or does not stay in
/// its state, and SpaceError when there is no room. After a failure those targets of a new set
/// stay that were complete; an earlier set that was to be replaced is as it was. Throws Cancelled
/// when `watch` returns false; then no target stays.
std::vector<std::size_t> Copy(const CopyPlan& plan, const Watch& watch);

}  // namespace slyver
