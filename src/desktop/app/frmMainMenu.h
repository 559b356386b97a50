#pragma once

#include <wx/menu.h>

#include <array>
#include <memory>
#include <string>

namespace slyver {

class Desktop;

/// The menus that all forms share.
class frmMainMenu {
 public:
  explicit frmMainMenu(Desktop& desktop);

  std::unique_ptr<wxMenu> hel;       ///< "RAM Warning"
  std::unique_ptr<wxMenu> he;        ///< "Help"
  std::array<wxMenuItem*, 2> Sly{};  ///< Hide, show the RAM warning.
  std::array<wxMenuItem*, 2> ab{};   ///< About, Contents.

 private:
  void Form_Load();
  void ShowSetting();
  void Sly_Click(int Index);
  void ab_Click(int Index);

  Desktop& desktop_;
  std::string RamSetting_;
};

}  // namespace slyver
