#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/evtloop.h>

/// Runs the tests inside an application, as the forms need one.
class TestApp final : public wxApp {
 public:
  bool OnInit() override {
    SetExitOnFrameDelete(false);
    return true;
  }
  int OnRun() override {
    wxEventLoop loop;
    const wxEventLoopActivator activator(&loop);
    return RUN_ALL_TESTS();
  }
};

wxIMPLEMENT_APP_NO_MAIN(TestApp);

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  return wxEntry(argc, argv);
}
