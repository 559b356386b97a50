#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/hidden/BigFiles.h"
#include "engine/hidden/Carrier.h"
#include "engine/system/FolderLock.h"
#include "engine/system/Ui.h"
#include "engine/system/WorkFolders.h"

namespace slyver {

/// What the recover form holds, by the names of its controls. All text is UTF-8.
struct RecoverForm {
  std::filesystem::path Text1;  ///< The carrier.
  std::string Text2;            ///< The password.
};

/// "Rec Hidden" and "Rec Main": write a hidden file, or the main file's own bytes, beside the
/// carrier as "Original " and the name. The carrier is never changed, and recovering a file costs
/// that file's length, not the carrier's.
///
/// All is said and asked through the Ui. The work folder "TempRRR" beside the carrier goes before
/// the final message, and with the object. Every procedure throws Cancelled when the user stops it.
class RecoverJob {
 public:
  RecoverJob(RecoverForm form, Ui& ui, BigFiles bigFiles);

  /// What comes after a procedure: the user goes back to the form; chooses one of Files(); the end
  /// of the program has been asked for; or the start-up form is to be unloaded, which ends it too.
  enum class Next { Form, Choose, Over, Unload };

  /// "Rec Hidden". Reads the directory; recovers the hidden file where there is one only.
  Next RecHidden();

  /// The hidden files to choose from, in the order of their records.
  const std::vector<HiddenFile>& Files() const { return files_; }

  /// Recovers hidden file `k` (1-based) of Files().
  Next DorestOfStuff(int k);

  /// "Rec Main".
  Next RecMain();

  /// The path of the file that was recovered, or nothing.
  const std::optional<std::filesystem::path>& Recovered() const { return recovered_; }

 private:
  template <typename Procedure>
  Next Guarded(const Procedure& procedure);
  std::optional<Next> Preamble();
  Next DorestOfStuff2();
  std::filesystem::path PieceOne(const std::string& numberMask) const;
  void SetProgress(double value);
  std::filesystem::path MoveOut(const std::filesystem::path& piece, const std::string& name);
  Next Over(std::string_view message, Icon icon);
  Next Unable();

  RecoverForm form_;
  Ui& ui_;
  const BigFiles bigFiles_;
  std::filesystem::path folder_;
  FileState carrier_;     ///< It must stay in this state.
  std::string password_;  ///< 8-bit text.
  std::vector<HiddenFile> files_;
  std::string numberMask_;
  std::optional<FolderLock> lock_;
  std::optional<ScratchFolder> work_;
  std::optional<std::filesystem::path> recovered_;
};

/// The hidden files of `carrier`, read without a trace. Says why there are none: with "No File Is
/// Hidden In This File.", "Incorrect Password. Unable To Recover File." or "Unable To Recover
/// File."; then the result is nothing. `password` is UTF-8.
std::optional<std::vector<HiddenFile>> ListHiddenFiles(const std::filesystem::path& carrier,
                                                       std::string_view password, Ui& ui);

}  // namespace slyver
