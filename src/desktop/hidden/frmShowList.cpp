#include "desktop/hidden/frmShowList.h"

#include <wx/display.h>
#include <wx/settings.h>
#include <wx/sizer.h>

#include <algorithm>
#include <array>

#include "desktop/hidden/frmHideRec.h"
#include "desktop/system/Controls.h"
#include "desktop/system/WxText.h"

namespace slyver {

namespace {

struct Column {
  const char* caption;
  int width;  ///< In twips, for a font whose average character is 80 twips wide.
};
constexpr std::array<Column, 3> columns = {
    {{"Filename", 1600}, {"Serial No.", 900}, {"Size", 1500}}};
constexpr int twipsPerCharacter = 80;
constexpr int rowsShown = 6;

}  // namespace

frmShowList::frmShowList(FormHost& host, frmHideRec& recover, const std::vector<HiddenFile>& files)
    : ModernForm(host, "frmShowList", "Select File To Recover :", Resizing::Free),
      recover_(recover),
      ImageList_(*this),
      LV1_(new wxListView(ClientArea(), wxID_ANY, wxDefaultPosition, wxDefaultSize,
                          wxLC_REPORT | wxLC_SINGLE_SEL | wxBORDER_THEME)),
      Command1_(NewButton(ClientArea(), "Recover", "Command1")),
      Command2_(NewButton(ClientArea(), "Cancel", "Command2")) {
  NameControl(*LV1_, "LV1", "Select File To Recover :");
  GetAllIcons(files);
  LayOut();
  OnClick(Command1_, this, &frmShowList::Command1_Click);
  OnClick(Command2_, this, &frmShowList::Command2_Click);
  // Double-click or Enter.
  LV1_->Bind(wxEVT_LIST_ITEM_ACTIVATED, [this](wxListEvent&) { Command1_Click(); });
  // The close button of the title bar means Cancel.
  Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent& event) {
    if (App().JobRuns())
      event.Skip();
    else
      Command2_Click();
  });
  LV1_->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    WidenNames();
  });
  LV1_->Bind(wxEVT_MOTION, [this](wxMouseEvent& event) {
    event.Skip();
    ShowWholeName(event.GetPosition());
  });
  LV1_->Select(0);
  LV1_->Focus(0);
  LV1_->SetFocus();
}

void frmShowList::LayOut() {
  int width = wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this) + 2 * Gap();
  for (int i = 0; i < LV1_->GetColumnCount(); ++i) width += LV1_->GetColumnWidth(i);
  LV1_->SetMinSize({width, (rowsShown + 2) * (GetCharHeight() + Gap())});
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(LV1_, wxSizerFlags(1).Expand());
  column->Add(ButtonRow(Gap(), {}, {Command1_, Command2_}),
              wxSizerFlags().Expand().Border(wxTOP, Gap()));
  Command1_->SetDefault();
  SetEscapeButton(Command2_);
  FitAndCentre(column);
}

/// Widens the name column to fill the list.
void frmShowList::WidenNames() {
  int room = LV1_->GetClientSize().x;
  for (int i = 1; i < LV1_->GetColumnCount(); ++i) room -= LV1_->GetColumnWidth(i);
  if (room > nameWidth_ && room != LV1_->GetColumnWidth(0)) LV1_->SetColumnWidth(0, room);
}

void frmShowList::ShowWholeName(const wxPoint& pointer) {
  int where = 0;
  const long row = LV1_->HitTest(pointer, where);
  const wxString name = row == wxNOT_FOUND ? wxString() : LV1_->GetItemText(row);
  if (name != LV1_->GetToolTipText()) LV1_->SetToolTip(name);
}

void frmShowList::GetAllIcons(const std::vector<HiddenFile>& files) {
  for (const Column& column : columns)
    LV1_->AppendColumn(column.caption, wxLIST_FORMAT_LEFT,
                       column.width * GetCharWidth() / twipsPerCharacter);
  LV1_->SetImageList(&ImageList_.Images(), wxIMAGE_LIST_SMALL);
  for (std::size_t i = 0; i < files.size(); ++i) {
    const wxString name = ToWx(files[i].name);
    const wxString key = GetFileIconKey(name, ImageList_, IconList::defaultKey);
    const long row = LV1_->InsertItem(static_cast<long>(i), name, ImageList_.IndexOf(key));
    LV1_->SetItem(row, 1, ToWx(std::to_string(i)));
    LV1_->SetItem(row, 2, ToWx(std::to_string(files[i].length) + " bytes"));
  }
  // Longer texts widen a column, up to half a screen.
  const int widest = wxDisplay(this).GetClientArea().width / 2;
  for (int i = 0; i < LV1_->GetColumnCount(); ++i) {
    const int least = LV1_->GetColumnWidth(i);
    LV1_->SetColumnWidth(i, wxLIST_AUTOSIZE);
    LV1_->SetColumnWidth(i, std::clamp(LV1_->GetColumnWidth(i), least, widest));
  }
  nameWidth_ = LV1_->GetColumnWidth(0);
}

void frmShowList::Command1_Click() {
  const long row = LV1_->GetFirstSelected();
  if (row < 0 || App().JobRuns()) return;
  Hide();
  recover_.DorestOfStuff(static_cast<int>(row) + 1);
}

void frmShowList::Command2_Click() {
  recover_.ListCancelled();
  Unload();
}

}  // namespace slyver
