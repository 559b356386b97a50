#include "desktop/system/FileDrop.h"

#include <wx/dnd.h>

#include <utility>

#include "desktop/system/WxText.h"

namespace slyver {

namespace {

class FileDrop final : public wxFileDropTarget {
 public:
  FileDrop(wxWindow& target, std::function<void(const std::filesystem::path&)> dropped)
      : target_(target), dropped_(std::move(dropped)) {}

  bool OnDropFiles(wxCoord /*x*/, wxCoord /*y*/, const wxArrayString& files) override {
    if (files.empty() || !target_.IsEnabled()) return false;
    // The sender waits for the end of the drop, and what follows may ask questions.
    target_.CallAfter([this, path = PathFromWx(files[0])] { dropped_(path); });
    return true;
  }

 private:
  wxWindow& target_;
  std::function<void(const std::filesystem::path&)> dropped_;
};

}  // namespace

void AcceptDroppedFile(wxWindow& target,
                       std::function<void(const std::filesystem::path&)> dropped) {
  target.SetDropTarget(new FileDrop(target, std::move(dropped)));
}

}  // namespace slyver
