#include "desktop/system/Dialog.h"

#include <wx/button.h>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/ModernForm.h"

namespace slyver {

Dialog::Dialog(wxWindow* parent) : wxDialog(parent, wxID_ANY, "Slyver") {}

void Dialog::Complete(wxSizer* content, long buttons) {
  wxSizer* const row = CreateStdDialogButtonSizer(buttons);
  // The toolkit's margins differ from the content's.
  for (wxSizerItem* const item : row->GetChildren()) {
    if (item->IsWindow()) {
      item->SetFlag(wxLEFT | wxALIGN_CENTRE_VERTICAL);
      item->SetBorder(Margin() / 2);
      MakeRoomForFont(*item->GetWindow());
    } else if (item->GetProportion() == 0) {
      item->AssignSpacer(0, 0);
    }
  }
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(content, wxSizerFlags(1).Expand().Border(wxALL, Margin()));
  column->Add(row, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, Margin()));
  SetSizerAndFit(column);
  CentreOnOwner(*this);
  const bool asks = (buttons & wxYES_NO) == wxYES_NO;
  SetAffirmativeId(asks ? wxID_YES : wxID_OK);
  SetEscapeId(asks ? wxID_NO : (buttons & wxCANCEL) != 0 ? wxID_CANCEL : wxID_OK);
  Bind(wxEVT_BUTTON, [this](wxCommandEvent& event) { EndModal(event.GetId()); });
}

}  // namespace slyver
