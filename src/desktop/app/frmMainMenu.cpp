#include "desktop/app/frmMainMenu.h"

#include "desktop/app/Desktop.h"
#include "engine/base/PathText.h"
#include "engine/settings/Registry.h"

namespace slyver {

frmMainMenu::frmMainMenu(Desktop& desktop)
    : hel(std::make_unique<wxMenu>()), he(std::make_unique<wxMenu>()), desktop_(desktop) {
  Sly[0] = hel->AppendCheckItem(wxID_ANY, "Don't Show RAM Warning In Future");
  Sly[1] = hel->AppendCheckItem(wxID_ANY, "Show RAM Warning In Future");
  ab[0] = he->Append(wxID_ANY, "About");
  ab[1] = he->Append(wxID_ANY, "Contents");
  for (int Index : {0, 1}) {
    const auto item = static_cast<std::size_t>(Index);
    hel->Bind(
        wxEVT_MENU, [this, Index](wxCommandEvent&) { Sly_Click(Index); }, Sly.at(item)->GetId());
    he->Bind(
        wxEVT_MENU, [this, Index](wxCommandEvent&) { ab_Click(Index); }, ab.at(item)->GetId());
  }
  Form_Load();
}

void frmMainMenu::Form_Load() {
  ShowSetting();
}

void frmMainMenu::ShowSetting() {
  RamSetting_ = GetRegString(RegRoot::LocalMachine, slyverKey, "RAM");
  Sly[0]->Check(!RamSetting_.empty());
  Sly[1]->Check(RamSetting_.empty());
}

void frmMainMenu::Sly_Click(int Index) {
  SaveRegString(RegRoot::LocalMachine, slyverKey, "RAM", Index == 0 ? "0" : "");
  // Shows the stored value, in case the write failed.
  ShowSetting();
}

void frmMainMenu::ab_Click(int Index) {
  if (Index == 0)
    desktop_.Talk().Message(
        "This Software Has Been Developed By:\r\nOrm Valis\r\nEmail Address:\r\n"
        "orm.valis@slyver.example",
        Icon::None);
  else if (const auto& page = desktop_.System().helpPage;
           !page.empty() && !desktop_.System().open(page))
    desktop_.Talk().Message("Cannot Open The Help: " + PathText(page), Icon::Information);
}

}  // namespace slyver
