#pragma once

#include <wx/button.h>
#include <wx/stattext.h>

#include <filesystem>

#include "desktop/app/Desktop.h"
#include "desktop/system/ModernForm.h"

namespace slyver {

/// The selection form: the four jobs, and a way out.
class frmSplitJoin final : public ModernForm {
 public:
  explicit frmSplitJoin(Desktop& desktop);

  std::filesystem::path FullPath;  ///< The file chosen for the split.
  std::filesystem::path Folder;    ///< Its folder, ending in a separator.
  std::string Remark;              ///< A note about the choice; may be empty.

  /// Presses the job's button.
  void Choose(Job job);

 private:
  void Form_Load();
  void Command1_Click();
  void Command2_Click();
  void Command3_Click();
  void Command4_Click();
  void Command5_Click();
  void SplitFileChosen(const std::filesystem::path& chosen);
  void Dropped(const std::filesystem::path& path, const std::string& remark);

  Desktop& desktop_;
  wxStaticText* Label1_;
  wxButton* Command1_;
  wxButton* Command2_;
  wxButton* Command3_;
  wxButton* Command4_;
  wxButton* Command5_;
};

}  // namespace slyver
