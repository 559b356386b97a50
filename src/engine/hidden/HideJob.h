#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "engine/age/Age.h"
#include "engine/base/CoreDump.h"
#include "engine/base/Secret.h"
#include "engine/disk/SourceFile.h"
#include "engine/disk/WorkFolders.h"
#include "engine/hidden/BigFiles.h"
#include "engine/hidden/Carrier.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// What the hide form holds, by the names of its controls. All text is UTF-8.
struct HideForm {
  std::filesystem::path Text1;  ///< The main file.
  std::filesystem::path Text2;  ///< The file to hide.
  Secret Text3;                 ///< The password, empty for an open list; or the passphrase where
  Secret Text4;                 ///< the file is encrypted. And again.
  std::filesystem::path output =
      {};                ///< The folder for the carrier; that of the main file when empty.
  bool encrypt = false;  ///< "Encrypt The File".
  std::optional<Secret> last = {};  ///< The password of the last file; asked for when not given.
};

/// The name under which a file to hide, encrypted or not, will come back, in a sentence. Empty when
/// it is its own.
std::string NameNote(const std::filesystem::path& hidden, bool encrypt = false);

/// Says that the carrier may not open as the main file does: its format, which its first bytes
/// tell, is read from its end or takes nothing behind it. Empty for any other file, and for one
/// that cannot be read.
std::string FormatNote(const std::filesystem::path& main);

/// "Hide": puts a file into a main file, as a first hide or into a carrier that has room. The
/// result is a new file beside the main file; the main file and the hidden one are never changed.
///
/// The steps are called one after the other, each as long as the one before says GoOn: Check,
/// PrepareHide, CheckIni, DoAll. Each says and asks what it has to through the Ui. Any step throws
/// Cancelled when the user stops it; the work folders go with the object.
class HideJob {
 public:
  /// What comes after a step.
  enum class Next {
    Form,  ///< The user goes back to the form, as Form() has it.
    Wait,  ///< The same step again, after a while.
    GoOn,  ///< The next step.
    Over,  ///< Nothing: the end of the program has been asked for, and the work folders are gone.
  };

  HideJob(HideForm form, Ui& ui, BigFiles bigFiles);

  /// The checks of the form, in their order.
  Next Check();

  /// What can be said without a password: whether the files and the folder for the carrier will do.
  /// For whoever has the password still to ask for; says why not.
  bool CheckFiles();

  /// The form as the checks have left it: boxes are emptied where the user is to type anew.
  const HideForm& Form() const { return form_; }

  /// Makes the work folder and writes the new directory; asks what an addition needs.
  Next PrepareHide();

  /// One tick of the wait for the directory: GoOn when all its values can be read back. The 80th
  /// tick without success ends the job.
  Next CheckIni();

  /// Pads the directory, joins the carrier and says how it went. Returns the carrier's path, or
  /// nothing when it could not be made. The job is over.
  std::optional<std::filesystem::path> DoAll();

 private:
  Next CheckNames();
  Next CheckPasswords();
  Next CheckLengths();
  Next ChooseAddition(int records, const Directory& old);
  void RequireFilled(const Directory& directory, std::string_view password, int records) const;
  Next StageHideFiles(const Directory* old);
  bool DirectoryIsWritten() const;
  Record HiddenRecord();
  Next Back(std::string_view message);
  Next Over(std::string_view message, Icon icon);
  Next Unable();
  std::filesystem::path OutputPath() const;
  std::filesystem::path InWork(const char* name) const;

  const NoCoreDump noCoreDump_;
  HideForm form_;
  Ui& ui_;
  const BigFiles bigFiles_;
  FileState main_;  ///< Both files as they are checked; they must stay so.
  FileState hidden_;
  std::uint64_t mainBytes_ = 0;  ///< What of the main file goes into the carrier.
  std::string password_;         ///< Of the list, 8-bit text.
  NewAgeFile sealed_;            ///< What is hidden instead of the file where it is encrypted.
  int index_ = 0;                ///< The new record's.
  int ticks_ = 0;
  std::optional<ScratchFolder> run_;    ///< Stands for the root of the disk.
  std::optional<ScratchFolder> work_;   ///< In it, "tempHHH".
  std::filesystem::path added_;         ///< The directory of an addition while it is written.
  std::filesystem::path oldDirectory_;  ///< The chunk that holds it; empty for a short main file.
};

}  // namespace slyver
