#pragma once

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/clipbrd.h>
#include <wx/dialog.h>
#include <wx/dnd.h>
#include <wx/evtloop.h>
#include <wx/modalhook.h>
#include <wx/msgdlg.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/toplevel.h>
#include <wx/uiaction.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "desktop/app/Desktop.h"
#include "desktop/app/WxUi.h"
#include "desktop/system/WxText.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {

/// Runs the window system's events until `done`; false when it takes too long.
inline bool RunEventsUntil(const std::function<bool()>& done) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL);
  }
  return true;
}

/// The form of this name that is loaded, or nullptr.
inline wxTopLevelWindow* FindForm(const wxString& name) {
  for (wxWindow* const window : wxTopLevelWindows)
    if (window->GetName() == name && !window->IsBeingDeleted() && !wxPendingDelete.Member(window))
      return dynamic_cast<wxTopLevelWindow*>(window);
  return nullptr;
}
inline bool IsLoaded(const wxString& form) {
  return FindForm(form) != nullptr;
}
inline bool IsShown(const wxString& form) {
  return IsLoaded(form) && FindForm(form)->IsShown();
}

/// The control `name` of a form or dialog. Throws when there is none.
template <typename Control = wxWindow>
Control& ControlOf(wxWindow* form, const wxString& name) {
  auto* const control =
      form == nullptr ? nullptr : dynamic_cast<Control*>(wxWindow::FindWindowByName(name, form));
  if (control == nullptr) throw std::runtime_error(FromWx("no control " + name));
  return *control;
}
template <typename Control = wxWindow>
Control& ControlOf(const wxString& form, const wxString& name) {
  return ControlOf<Control>(FindForm(form), name);
}
inline std::string TextOf(const wxString& form, const wxString& name) {
  return FromWx(ControlOf<wxTextCtrl>(form, name).GetValue());
}

/// Changes the text of a box as its user does by pasting.
inline void Paste(const wxString& form, const wxString& name, const std::string& text) {
  auto& box = ControlOf<wxTextCtrl>(form, name);
  ASSERT_TRUE(box.IsEnabled()) << name;
  box.SetValue(ToWx(text));
}

/// Takes the window system's answers to all that came before.
inline void Settle() {
  (void)wxGetMousePosition();
  wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL);
}

inline void Click(wxWindow& button) {
  Settle();
  ASSERT_TRUE(button.IsEnabled()) << button.GetName();
  wxCommandEvent event(wxEVT_BUTTON, button.GetId());
  event.SetEventObject(&button);
  button.HandleWindowEvent(event);
}
inline void Click(const wxString& form, const wxString& name) {
  Click(ControlOf(form, name));
}

/// Presses a key in a control; returns whether the control took it to type it.
inline bool Press(wxWindow& control, int key) {
  wxKeyEvent event(wxEVT_CHAR);
  event.m_keyCode = key;
  event.m_uniChar = static_cast<wxChar>(key < WXK_START ? key : WXK_NONE);
  event.SetEventObject(&control);
  return !control.HandleWindowEvent(event);
}

/// Types at the end of a text box, as far as its filter lets the keys through.
inline void Type(const wxString& form, const wxString& name, const std::string& keys) {
  auto& box = ControlOf<wxTextCtrl>(form, name);
  ASSERT_TRUE(box.IsEnabled()) << name;
  for (const char key : keys)
    if (Press(box, key)) box.AppendText(wxString(1, key));
}

/// Presses a key of the keyboard; what has the focus takes it.
inline void Key(int key, int modifiers = wxMOD_NONE) {
  wxUIActionSimulator().Char(key, modifiers);
  Settle();
}

/// Goes to a control of a form or dialog by the Tab key, which selects the text of a box.
inline void TabTo(wxWindow& control) {
  wxGetTopLevelParent(&control)->Raise();
  Settle();
  for (int i = 0; i < 20 && wxWindow::FindFocus() != &control; ++i) Key(WXK_TAB);
  ASSERT_EQ(wxWindow::FindFocus(), &control) << control.GetName();
}

/// Fills a box by keyboard; the text comes from the clipboard, as each key takes the simulator
/// long.
inline void Fill(wxTextCtrl& box, const std::string& text) {
  if (wxWindow::FindFocus() == &box) Key('A', wxMOD_CONTROL);
  TabTo(box);
  if (text.empty()) return Key(WXK_DELETE);
  ASSERT_TRUE(wxTheClipboard->Open());
  EXPECT_TRUE(wxTheClipboard->SetData(new wxTextDataObject(ToWx(text))));
  wxTheClipboard->Close();
  Key('V', wxMOD_CONTROL);
  EXPECT_EQ(FromWx(box.GetValue()), text);
}
inline void Fill(const wxString& form, const wxString& name, const std::string& text) {
  Fill(ControlOf<wxTextCtrl>(form, name), text);
}

/// Drops files on a window.
inline void Drop(wxWindow& window, const std::vector<std::filesystem::path>& paths) {
  auto* const target = dynamic_cast<wxFileDropTarget*>(window.GetDropTarget());
  ASSERT_NE(target, nullptr);
  wxArrayString files;
  for (const std::filesystem::path& path : paths) files.Add(PathToWx(path));
  EXPECT_TRUE(target->OnDropFiles(0, 0, files));
  wxTheApp->ProcessPendingEvents();
}

/// The desktop's own user interface. What comes is held against a script and then shown for real;
/// its user presses the button, or types, that the script tells. Dialogs for files are the window
/// system's: the tests by keyboard and mouse have them.
class ShownUi final : public WxUi, private wxModalDialogHook {
 public:
  explicit ShownUi(ScriptedUi& script) : script_(script) { Register(); }
  ~ShownUi() override { Unregister(); }

  /// Called with each dialog while it is shown.
  std::function<void(wxDialog&)> look = [](wxDialog&) {};
  /// Called when a job first tells how far it has come.
  std::function<void()> atProgress = [] {};
  /// What the line of the form said beneath the last dialog.
  std::string lineBeneath;

  void Message(std::string_view text, Icon icon) override {
    script_.Message(text, icon);
    Prepare(text, wxID_OK);
    WxUi::Message(text, icon);
  }
  Answer Question(std::string_view text, Buttons buttons, Stakes stakes) override {
    const Answer answer = script_.Question(text, buttons, stakes);
    const bool agrees = answer == Answer::Yes || answer == Answer::Ok;
    Prepare(text, buttons == Buttons::YesNo ? (agrees ? wxID_YES : wxID_NO)
                                            : (agrees ? wxID_OK : wxID_CANCEL));
    EXPECT_EQ(WxUi::Question(text, buttons, stakes), answer);
    return answer;
  }
  std::optional<std::string> MaskedInputBox(std::string_view prompt, SecretKind kind) override {
    std::optional<std::string> typed = script_.MaskedInputBox(prompt, kind);
    Prepare(typed.value_or(""), typed ? wxID_OK : wxID_CANCEL);
    prompt_ = ToWx(prompt);
    EXPECT_EQ(WxUi::MaskedInputBox(prompt, kind), typed);
    return typed;
  }
  std::optional<std::filesystem::path> OpenFile(
      std::string_view title, std::string_view filter,
      const std::filesystem::path& initialFolder) override {
    return script_.OpenFile(title, filter, initialFolder);
  }
  std::optional<std::filesystem::path> PickFolder() override { return script_.PickFolder(); }
  void ShowProgressForm(std::string_view caption) override {
    script_.ShowProgressForm(caption);
    WxUi::ShowProgressForm(caption);
  }
  void SetProgress(const Progress& progress) override {
    std::exchange(atProgress, [] {})();
    script_.SetProgress(progress);
    WxUi::SetProgress(progress);
  }
  void EndProgram() override { script_.EndProgram(); }

 private:
  void Prepare(std::string_view text, int button) {
    text_ = ToWx(text);
    text_.Replace("\r\n", "\n");
    button_ = button;
  }
  int Enter(wxDialog* dialog) override {
    for (const char* const line : {"Text4", "StatusLine"})
      if (auto* const box = wxWindow::FindWindowByName(line, dialog->GetParent()))
        lineBeneath = FromWx(static_cast<wxTextCtrl*>(box)->GetValue());
    if (dynamic_cast<wxMessageDialogBase*>(dialog) != nullptr) return button_;  // The system's own.
    dialog->CallAfter([this, dialog] {
      EXPECT_TRUE(dialog->IsShown());
      wxWindow& shown = ControlOf(dialog, "Text");
      if (auto* const box = dynamic_cast<wxTextCtrl*>(&shown)) {
        EXPECT_EQ(ControlOf<wxStaticText>(dialog, "Prompt").GetLabelText(), prompt_);
        look(*dialog);
        box->SetValue(text_);
      } else {
        EXPECT_EQ(dynamic_cast<wxStaticText&>(shown).GetLabelText(), text_);
        look(*dialog);
      }
      Click(*dialog->FindWindow(button_));
    });
    return wxID_NONE;
  }
  void Exit(wxDialog* /*dialog*/) override {}

  ScriptedUi& script_;
  wxString text_, prompt_;
  int button_ = wxID_OK;
};

inline std::string RamValue() {
  return GetRegString(RegRoot::LocalMachine, slyverKey, "RAM");
}

/// The real forms, with a user who follows a script, and a computer that is as the test makes it.
class DesktopTest : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    MakeDesktop();
  }
  void TearDown() override {
    desktop.reset();
    // Forms are deleted when the program is idle.
    EXPECT_TRUE(RunEventsUntil([] { return wxTopLevelWindows.IsEmpty(); }));
    TempFolderTest::TearDown();
  }

  /// A program that is not yet started; one that is there goes.
  void MakeDesktop() {
    desktop = std::make_unique<Desktop>(
        shown, Surroundings{.anotherInstanceRuns = [this] { return anotherRuns; },
                            .memoryStatus = [this] { return memory; },
                            .helpPage = folder / "index.html",
                            .open =
                                [this](const std::filesystem::path& file) {
                                  opened.push_back(file);
                                  return hasViewer;
                                }});
    shown.Serve(*desktop);
  }

  /// Starts the program with a path that the user has typed.
  void Start(const std::filesystem::path& path = {}) { desktop->Start(PathText(path)); }

  ScriptedUi ui;
  ShownUi shown{ui};
  bool anotherRuns = false;
  bool hasViewer = true;
  MemoryStatus memory{.totalPhysical = 8'000'000'000, .availablePhysical = 4'000'000'000};
  std::vector<std::filesystem::path> opened;
  std::unique_ptr<Desktop> desktop;
};

}  // namespace slyver
