#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "engine/disk/NewFolders.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// The piece size, in bytes, of "Predefined File Size": one diskette.
inline constexpr std::uint64_t predefinedSize = 1450000;

/// What the split form holds, by the names of its controls.
struct SplitForm {
  std::filesystem::path Text1;  ///< The file to split.
  std::filesystem::path Text2;  ///< The output folder.
  bool Option2 = false;         ///< "Specified File Size" is chosen, else the predefined one.
  std::string Text3;            ///< The piece size in bytes, or the marker.
  std::string Nofile;           ///< The number of pieces, or the marker.
  bool Check1 = false;          ///< "Write Checksum File" is ticked.
};

/// What follows a split that failed: the user is asked whether to leave the program or go back to
/// the form, or, where there is no form, is not.
enum class AfterFailure { Ask, End };

/// Asks whether to create a folder that is missing, and creates those of its folders that are
/// followed by a separator. Returns `false` when the user does not want it, and when it cannot be,
/// since the path leads through a file; then that has been said. A folder that could not be created
/// shows when something is to be written in it.
bool OfferFolder(const std::filesystem::path& folder, NewFolders& created, Ui& ui);

/// "Sly It": checks the form, makes the output folder if the user agrees, splits and reports. All
/// is said and asked through `ui`. `form.Text2` gets a separator at its end.
///
/// Returns the number of pieces made; 0 when it was refused or has failed. It asks for the end of
/// the program where the split is done, or cannot be done for good; otherwise the user is back at
/// the form. Throws Cancelled.
std::int16_t SlyIt(SplitForm& form, Ui& ui, AfterFailure afterFailure = AfterFailure::Ask);

}  // namespace slyver
