#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/age/Age.h"
#include "engine/base/CoreDump.h"
#include "engine/base/Secret.h"
#include "engine/disk/SourceFile.h"
#include "engine/disk/WorkFolders.h"
#include "engine/hidden/BigFiles.h"
#include "engine/hidden/Carrier.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// What the recover form holds, by the names of its controls. All text is UTF-8.
struct RecoverForm {
  std::filesystem::path Text1;  ///< The carrier.
  Secret Text2;                 ///< The password; empty for an open list.
  std::filesystem::path output =
      {};                  ///< The folder for what is recovered; the carrier's when empty.
  bool raw = false;        ///< Encrypted files are not decrypted.
  Secret passphrase = {};  ///< Theirs. If empty, the password is tried, then the user is asked.
  bool ask = true;         ///< Somebody can be asked for a passphrase.
};

/// "Rec Hidden" and "Rec Main": write a hidden file, or the main file's own bytes, beside the
/// carrier as "Original " and the name. The carrier is never changed, and recovering a file costs
/// that file's length, not the carrier's.
///
/// A hidden file whose record's name ends in ".age" and which is an age file with a passphrase is
/// decrypted on the way, and named without that ending. Where a passphrase is given and decrypts
/// none of the files to recover, the job fails. Where none is given or typed, the age file itself
/// is recovered, and a message says so.
///
/// All is said and asked through the Ui. The work folder "TempRRR" goes before the final message,
/// and with the object. Every procedure throws Cancelled when the user stops it.
class RecoverJob {
 public:
  /// What comes after a procedure.
  enum class Next {
    Form,    ///< The user goes back to the form.
    Choose,  ///< The user chooses one of Files().
    Over,    ///< Nothing: the end of the program has been asked for.
    Unload,  ///< The start-up form is to be unloaded, which ends the program too.
  };

  RecoverJob(RecoverForm form, Ui& ui, BigFiles bigFiles);

  /// "Rec Hidden". Reads the directory; recovers the hidden file where there is one only.
  Next RecHidden();

  /// The hidden files to choose from, in the order of their records.
  const std::vector<HiddenFile>& Files() const { return files_; }

  /// Recovers hidden file `k` (1-based) of Files().
  Next DorestOfStuff(int k);

  /// Recovers every hidden file: all of them or, when one fails, none.
  Next RecAll();

  /// "Rec Main".
  Next RecMain();

  /// The paths of the files that were recovered.
  const std::vector<std::filesystem::path>& Recovered() const { return recovered_; }

 private:
  /// What is written of a hidden file: its bytes, changed by `cipher` unless that is null.
  struct Contents {
    HiddenFile file;
    bool isAge = false;  ///< An age file; not looked for where it is recovered as it is.
    std::shared_ptr<const RangeCipher> cipher = {};
  };

  template <typename Procedure>
  Next Guarded(const Procedure& procedure);
  void Preamble();
  Directory OpenDirectory(double progress);
  void OpenFiles();
  Next Recover(const std::vector<HiddenFile>& files);
  Contents ContentsOf(const HiddenFile& file);
  void RequireDecrypted(const std::vector<Contents>& contents) const;
  std::shared_ptr<const RangeCipher> Unlock(const AgeHeader& header);
  std::filesystem::path Cut(std::uint64_t offset, std::uint64_t length, const std::string& name,
                            double barValue, std::shared_ptr<const RangeCipher> cipher = {});
  void MoveOut(const std::filesystem::path& piece, const std::string& name);
  void SetProgress(double value);
  Next Over(std::string_view message, Icon icon);

  const NoCoreDump noCoreDump_;
  RecoverForm form_;
  Ui& ui_;
  const BigFiles bigFiles_;
  std::filesystem::path folder_;  ///< For what is recovered.
  FileState carrier_;             ///< It must stay in this state.
  std::string password_;          ///< Of the list, 8-bit text.
  Secret passphrase_;             ///< The one to try, if any.
  std::vector<HiddenFile> files_;
  std::optional<ScratchFolder> work_;
  std::vector<std::filesystem::path> recovered_;
};

/// How many files `carrier` hides, which needs no password. Says why there are none, as
/// ListHiddenFiles does; then the result is nothing.
std::optional<int> CountHiddenFiles(const std::filesystem::path& carrier, Ui& ui);

/// The hidden files of `carrier`, read without a trace. Says why there are none: with "No File Is
/// Hidden In This File.", "Incorrect Password. Unable To Recover File." or "Unable To Recover
/// File."; then the result is nothing. `password` is UTF-8, and empty for an open list.
std::optional<std::vector<HiddenFile>> ListHiddenFiles(const std::filesystem::path& carrier,
                                                       const Secret& password, Ui& ui);

}  // namespace slyver
