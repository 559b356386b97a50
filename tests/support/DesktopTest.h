#pragma once

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/textctrl.h>
#include <wx/toplevel.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "desktop/app/Desktop.h"
#include "desktop/system/WxText.h"
#include "engine/system/Registry.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {

/// Runs the window system's events until `done`; false when it takes too long.
inline bool RunEventsUntil(const std::function<bool()>& done) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
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

inline bool IsShown(const wxString& form) {
  const wxTopLevelWindow* const found = FindForm(form);
  return found != nullptr && found->IsShown();
}

inline bool IsLoaded(const wxString& form) {
  return FindForm(form) != nullptr;
}

/// The control `name` of the form `form`. Throws when there is none.
template <typename Control>
Control& ControlOf(const wxString& form, const wxString& name) {
  wxTopLevelWindow* const found = FindForm(form);
  auto* const control =
      found == nullptr ? nullptr : dynamic_cast<Control*>(wxWindow::FindWindowByName(name, found));
  if (control == nullptr) throw std::runtime_error(FromWx("no control " + name + " in " + form));
  return *control;
}

inline std::string TextOf(const wxString& form, const wxString& name) {
  return FromWx(ControlOf<wxTextCtrl>(form, name).GetValue());
}

inline void Click(const wxString& form, const wxString& name) {
  auto& button = ControlOf<wxWindow>(form, name);
  ASSERT_TRUE(button.IsEnabled()) << name;
  wxCommandEvent event(wxEVT_BUTTON, button.GetId());
  event.SetEventObject(&button);
  button.HandleWindowEvent(event);
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

/// Rubs out all that a text box holds, a character at a time.
inline void RubOut(const wxString& form, const wxString& name) {
  auto& box = ControlOf<wxTextCtrl>(form, name);
  while (!box.IsEmpty()) {
    ASSERT_TRUE(Press(box, WXK_BACK));
    box.Remove(box.GetLastPosition() - 1, box.GetLastPosition());
  }
}

inline std::string RamValue() {
  return GetRegString(RegRoot::LocalMachine, slyverKey, "RAM");
}

/// The real forms with a scripted user and a computer that is as the test makes it.
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
        ui, Surroundings{
                .anotherInstanceRuns = [this] { return anotherRuns; },
                .memoryStatus = [this] { return memory; },
                .helpPage = folder / "index.html",
                .open = [this](const std::filesystem::path& file) { opened.push_back(file); }});
  }

  /// Starts the program with a path that the user has typed.
  void Start(const std::filesystem::path& path = {}) { desktop->Start(PathText(path)); }

  ScriptedUi ui;
  bool anotherRuns = false;
  MemoryStatus memory{.totalPhysical = 8'000'000'000, .availablePhysical = 4'000'000'000};
  std::vector<std::filesystem::path> opened;
  std::unique_ptr<Desktop> desktop;
};

}  // namespace slyver
