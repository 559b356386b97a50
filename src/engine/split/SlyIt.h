#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "engine/disk/NewFolders.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// The piece size of "Predefined File Size" in bytes: one diskette.
inline constexpr std::uint64_t predefinedSize = 1450000;

/// The values of the split form, by the names of its controls.
struct SplitForm {
  std::filesystem::path Text1;  ///< The file to split.
  std::filesystem::path Text2;  ///< The output folder.
  bool Option2 = false;         ///< "Specified File Size" is chosen, not the predefined one.
  std::string Text3;            ///< The piece size in bytes, or the marker.
  std::string Nofile;           ///< The number of pieces, or the marker.
  bool Check1 = false;          ///< "Write Checksum File" is ticked.
};

/// What to do after a failed split: ask whether to end the program or go back to the form, or end.
enum class AfterFailure { Ask, End };

/// Asks whether to create a missing folder, and creates its folders that are followed by a
/// separator. Returns false if the user declines, or if the path leads through a file, which is
/// shown. Ignores other errors: writing into the folder will report them.
bool OfferFolder(const std::filesystem::path& folder, NewFolders& created, Ui& ui);

/// Runs "Sly It": checks the form, creates the output folder if the user agrees, splits and
/// reports. Adds a separator to `form.Text2`.
///
/// Returns the number of pieces; 0 if refused or failed. Ends the program if the split is done or
/// impossible; otherwise the user is back at the form. Throws Cancelled.
std::int16_t SlyIt(SplitForm& form, Ui& ui, AfterFailure afterFailure = AfterFailure::Ask);

}  // namespace slyver
