#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "engine/hidden/BigFiles.h"
#include "engine/hidden/Carrier.h"
#include "engine/system/FolderLock.h"
#include "engine/system/Ui.h"
#include "engine/system/WorkFolders.h"

namespace slyver {

/// What the hide form holds, by the names of its controls. All text is UTF-8.
struct HideForm {
  std::filesystem::path Text1;  ///< The main file.
  std::filesystem::path Text2;  ///< The file to hide.
  std::string Text3;            ///< The password,
  std::string Text4;            ///< and again.
};

/// What the user should know about the name of a file to hide before it is hidden: that it will not
/// come back as it is. Empty when it will.
std::string NameNote(const std::filesystem::path& hidden);

/// "Hide": puts a file into a main file, as a first hide or into a carrier that has room. The
/// result is a new file beside the main file; the main file and the hidden one are never changed.
///
/// The steps are called one after the other: Check, PrepareHide, CheckIni until it says that the
/// directory is complete, DoAll. Each says and asks what it has to through the Ui. Where a step
/// returns that it is over, the end of the program has been asked for and the work folder is gone.
/// Any step throws Cancelled when the user stops it; the work folder goes with the object.
class HideJob {
 public:
  HideJob(HideForm form, Ui& ui, BigFiles bigFiles);

  /// The checks of the form, in their order. False when the user is to go back to the form, or
  /// when the program is to end.
  bool Check();

  /// The form as the checks have left it: boxes are emptied where the user is to type anew.
  const HideForm& Form() const { return form_; }

  /// Makes the work folder and writes the new directory; asks what an addition needs. False when
  /// the job is over.
  bool PrepareHide();

  enum class Ini { Waiting, Complete, Over };

  /// One tick of the wait for the directory: Complete when all its values can be read back. After
  /// 80 ticks without success it is over.
  Ini CheckIni();

  /// Pads the directory, joins the carrier and says how it went. Returns the carrier's path, or
  /// nothing when it could not be made.
  std::optional<std::filesystem::path> DoAll();

 private:
  bool CheckPasswords();
  bool CheckLengths();
  bool ChooseAddition(int records, const ValueReader& old);
  bool StageHideFiles(const ValueReader* old);
  bool DirectoryIsWritten() const;
  /// Removes the work folder, shows the message and asks for the end of the program; false.
  bool Over(std::string_view message, Icon icon);
  bool Unable();
  std::filesystem::path OutputPath() const;
  std::filesystem::path InWork(const char* name) const;

  HideForm form_;
  Ui& ui_;
  const BigFiles bigFiles_;
  FileState main_;  ///< Both files as they are checked; they must stay so.
  FileState hidden_;
  std::uint64_t mainBytes_ = 0;  ///< What of the main file goes into the carrier.
  std::string password_;         ///< 8-bit text.
  int index_ = 0;                ///< The new record's.
  int ticks_ = 0;
  std::optional<FolderLock> lock_;
  std::optional<ScratchFolder> work_;
  std::optional<ScratchFile> added_;    ///< The directory of an addition while it is written.
  std::filesystem::path oldDirectory_;  ///< The chunk that holds it; empty for a short main file.
};

}  // namespace slyver
