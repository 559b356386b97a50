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

/// The values of the hide form, by the names of its controls. All text is UTF-8.
struct HideForm {
  std::filesystem::path Text1;  ///< The main file.
  std::filesystem::path Text2;  ///< The file to hide.
  Secret Text3;  ///< The password, empty for an open list; with `encrypt` the passphrase.
  Secret Text4;  ///< Text3 again.
  std::filesystem::path output = {};  ///< The folder for the carrier; the main file's if empty.
  bool encrypt = false;               ///< "Encrypt The File".
  std::optional<Secret> last = {};    ///< The password of the last file; `nullopt` to ask.
};

/// Returns a note about the name that a hidden file will be recovered with; empty if it is the
/// same.
std::string NameNote(const std::filesystem::path& hidden, bool encrypt = false);

/// Returns a note that the carrier may not open, if the main file's format allows no data after its
/// end. Empty for other formats, and for a file that cannot be read.
std::string FormatNote(const std::filesystem::path& main);

/// Runs "Hide": hides a file in a main file or adds it to a carrier. Writes a new file next to the
/// main file; does not change the two.
///
/// Call Check, PrepareHide, CheckIni and DoAll in order, each if the step before returns GoOn. Each
/// reports through the Ui, and throws Cancelled if the user stops it. The destructor deletes the
/// work folders.
class HideJob {
 public:
  /// What to do after a step.
  enum class Next {
    Form,  ///< Go back to Form().
    Wait,  ///< Repeat the step after a while.
    GoOn,  ///< Call the next step.
    Over,  ///< Nothing: the program ends, and the work folders are deleted.
  };

  HideJob(HideForm form, Ui& ui, BigFiles bigFiles);

  /// Checks the form.
  Next Check();

  /// Checks what needs no password, before one is asked for: the files and the carrier's folder.
  /// Shows what is wrong.
  bool CheckFiles();

  /// Returns the form after the checks, which empty boxes to be typed again.
  const HideForm& Form() const { return form_; }

  /// Creates the work folder and writes the new directory; asks what an addition needs.
  Next PrepareHide();

  /// Returns GoOn when all values of the directory can be read back. The 80th call without success
  /// ends the job.
  Next CheckIni();

  /// Pads the directory, joins the carrier, reports and ends the job. Returns the carrier's path;
  /// `nullopt` on an error.
  std::optional<std::filesystem::path> DoAll();

 private:
  Next CheckNames();
  Next CheckPasswords();
  Next CheckLengths();
  Next Stage();
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
  FileState main_;                        ///< The main file's state, which must not change.
  FileState hidden_;                      ///< The hidden file's.
  std::uint64_t mainBytes_ = 0;           ///< The bytes of the main file to copy.
  std::string password_;                  ///< Of the list, 8-bit text.
  std::shared_ptr<const Source> sealed_;  ///< The encrypted file, if wanted.
  int index_ = 0;                         ///< The new record's.
  int ticks_ = 0;
  std::optional<ScratchFolder> run_;    ///< Replaces the root of the disk.
  std::optional<ScratchFolder> work_;   ///< "tempHHH" in it.
  std::filesystem::path added_;         ///< An addition's directory while it is written.
  std::filesystem::path oldDirectory_;  ///< The old directory's chunk; empty for a short main file.
};

}  // namespace slyver
