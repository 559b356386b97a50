#include "desktop/system/FileDrop.h"

#include <wx/dnd.h>

#include <utility>

#include "desktop/system/WxText.h"

namespace slyver {

namespace {

class FileDrop final : public wxFileDropTarget {
 public:
  FileDrop(wxWindow& target, FileDropped dropped) : target_(target), dropped_(std::move(dropped)) {}

  bool OnDropFiles(wxCoord /*x*/, wxCoord /*y*/, const wxArrayString& files) override {
    if (files.empty() || !target_.IsEnabled()) return false;
    // The sender waits until the drop ends, and `dropped_` may ask questions.
    const std::string remark =
        files.size() == 1 ? std::string()
                          : "The First Of " + std::to_string(files.size()) + " Files Was Taken.";
    target_.CallAfter([this, path = PathFromWx(files[0]), remark] { dropped_(path, remark); });
    return true;
  }

 private:
  wxWindow& target_;
  FileDropped dropped_;
};

}  // namespace

void AcceptDroppedFile(wxWindow& target, FileDropped dropped) {
  target.SetDropTarget(new FileDrop(target, std::move(dropped)));
}

}  // namespace slyver
