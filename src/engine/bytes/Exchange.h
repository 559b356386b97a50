#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/bytes/CopyPlan.h"
#include "engine/bytes/TargetSet.h"

namespace slyver {

// A set that replaces an earlier one is written into a staging folder, ".slyver-*.set", and
// exchanged for the earlier one when it is complete and flushed. The earlier files are in "earlier"
// in that folder meanwhile, so that a killed exchange can be rolled back.

/// The names of the set that a new one replaces: its list, if any, then number 1, then the rest.
struct EarlierSet {
  std::vector<std::string> names;
  bool hasList = false;
  bool hasFirst = false;

  void Add(const std::string& name, bool isList, bool isFirst);
};

/// Rolls back and deletes the staging folder of a killed run. Called under the lock. Throws Error
/// if it has other files, and FileError.
void RemoveStagingLeftover(const CopyPlan& plan);

/// Restores the earlier set that a killed exchange has moved aside. Throws FileError; the rest then
/// stays aside for the next call.
void RestoreEarlierSet(const CopyPlan& plan);

/// Returns the set that replaces `earlier`. Throws FileError.
std::unique_ptr<TargetSet> ExchangeFor(EarlierSet earlier, const CopyPlan& plan,
                                       std::shared_ptr<TargetFile> first, const Sharing& sharing);

}  // namespace slyver
