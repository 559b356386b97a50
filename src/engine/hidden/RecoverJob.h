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

/// The values of the recover form, by the names of its controls. All text is UTF-8.
struct RecoverForm {
  std::filesystem::path Text1;        ///< The carrier.
  Secret Text2;                       ///< The password; empty for an open list.
  std::filesystem::path output = {};  ///< The folder for recovered files; the carrier's if empty.
  bool raw = false;                   ///< Does not decrypt files.
  Secret passphrase = {};             ///< If empty, tries the password, then asks.
  bool ask = true;                    ///< Somebody can be asked for a passphrase.
};

/// Runs "Rec Hidden" and "Rec Main": recovers a hidden file, or the main file, next to the carrier
/// as "Original " and the name. Does not change the carrier. Costs the file's length, not the
/// carrier's.
///
/// Decrypts a hidden file that is named ".age" and is an age file with a passphrase, and removes
/// that extension. Fails if a given passphrase decrypts none of the files. Without a passphrase,
/// recovers the age file itself and says so.
///
/// Reports through the Ui. Deletes the work folder "TempRRR" before the final message. Every
/// procedure throws Cancelled if the user stops it.
class RecoverJob {
 public:
  /// What to do after a procedure.
  enum class Next {
    Form,    ///< Go back to the form.
    Choose,  ///< Choose one of Files().
    Over,    ///< Nothing: the program ends.
    Unload,  ///< Unload the start-up form, which ends the program too.
  };

  RecoverJob(RecoverForm form, Ui& ui, BigFiles bigFiles);

  /// Runs "Rec Hidden". Reads the directory, and recovers the hidden file if there is only one.
  Next RecHidden();

  /// Returns the hidden files to choose from, in the order of their records.
  const std::vector<HiddenFile>& Files() const { return files_; }

  /// Recovers hidden file `k` (from 1) of Files().
  Next DorestOfStuff(int k);

  /// Recovers all hidden files, or none if one fails.
  Next RecAll();

  /// Runs "Rec Main".
  Next RecMain();

  /// Returns the paths of the recovered files.
  const std::vector<std::filesystem::path>& Recovered() const { return recovered_; }

 private:
  /// What to write for a hidden file: its bytes, or `plain` unless null.
  struct Contents {
    HiddenFile file;
    bool isAge = false;  ///< An encrypted file; always false with RecoverForm::raw.
    std::shared_ptr<const Source> plain = {};
  };

  template <typename Procedure>
  Next Guarded(const Procedure& procedure);
  void Preamble();
  Directory OpenDirectory(double progress);
  void OpenFiles();
  Next Recover(const std::vector<HiddenFile>& files);
  Contents ContentsOf(const HiddenFile& file);
  void RequireDecrypted(const std::vector<Contents>& contents) const;
  std::shared_ptr<const Source> Decrypt(const HiddenFile& file, const AgeHeader& header);
  std::filesystem::path Cut(std::uint64_t offset, std::uint64_t length, const std::string& name,
                            double barValue, std::shared_ptr<const Source> plain = {});
  void MoveOut(const std::filesystem::path& piece, const std::string& name);
  void SetProgress(double value);
  Next Over(std::string_view message, Icon icon);

  const NoCoreDump noCoreDump_;
  RecoverForm form_;
  Ui& ui_;
  const BigFiles bigFiles_;
  std::filesystem::path folder_;  ///< For recovered files.
  FileState carrier_;             ///< The carrier's state, which must not change.
  std::string password_;          ///< Of the list, 8-bit text.
  Secret passphrase_;             ///< The passphrase to try; empty for none.
  std::vector<HiddenFile> files_;
  std::optional<ScratchFolder> work_;
  std::vector<std::filesystem::path> recovered_;
};

/// Returns the number of files hidden in `carrier`, without a password; `nullopt` on an error,
/// which is shown as by ListHiddenFiles().
std::optional<int> CountHiddenFiles(const std::filesystem::path& carrier, Ui& ui);

/// Returns the hidden files of `carrier`, without writing to the disk. `password` is UTF-8; empty
/// for an open list. `nullopt` on an error, which is shown: "No File Is Hidden In This File.",
/// "Incorrect Password. Unable To Recover File." or "Unable To Recover File."
std::optional<std::vector<HiddenFile>> ListHiddenFiles(const std::filesystem::path& carrier,
                                                       const Secret& password, Ui& ui);

}  // namespace slyver
