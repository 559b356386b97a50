#include "engine/split/SlyIt.h"

#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"
#include "engine/disk/WorkFolders.h"
#include "engine/settings/Registry.h"
#include "engine/split/PieceName.h"
#include "engine/split/SizeArithmetic.h"
#include "engine/split/SplitM.h"

namespace slyver {

namespace {

void End(Ui& ui) {
  DeleteFilePathValue();
  ui.EndProgram();
}

/// Returns the form's piece size in bytes; `nullopt` if it has none, which is shown.
std::optional<std::uint64_t> SizeAskedFor(const SplitForm& form, Ui& ui) {
  if (!form.Option2) return predefinedSize;
  if (form.Text3.empty()) {
    ui.Message("Please Specify The Size Of The File.", Icon::Information);
    return std::nullopt;
  }
  const std::optional<std::uint64_t> size = WholeBytes(form.Text3);
  if (!size) ui.Message("Please Enter Whole Numbers.", Icon::Information);
  return size;
}

/// Throws FileError if a missing folder's path leads through something that is not a folder or
/// cannot be looked at.
void RequireFoldersAbove(const std::filesystem::path& folder) {
  for (std::filesystem::path path = folder; !FolderExists(path); path = path.parent_path()) {
    if (path.has_filename() && NameIsTaken(path))
      throw FileError(path, std::make_error_code(std::errc::not_a_directory));
    if (path == path.parent_path()) return;
  }
}

}  // namespace

bool OfferFolder(const std::filesystem::path& folder, NewFolders& created, Ui& ui) {
  if (FolderExists(folder)) return true;
  if (!ShowingErrors(ui, false, [&] {
        RequireFoldersAbove(folder);
        return true;
      }))
    return false;
  if (!AskYesNo(ui, PathText(folder) + " Does Not Exists. Do You Want To Create It?")) return false;
  (void)MakeSureDirectoryPathExists(folder, created);
  return true;
}

std::int16_t SlyIt(SplitForm& form, Ui& ui, AfterFailure afterFailure) {
  if (form.Text3 == unableToDivide || form.Nofile == unableToDivide) {
    ui.Message("Unable To Divide File.", Icon::Critical);
    DeleteFilePathValue();
    return 0;
  }
  NewFolders created;
  if (!OfferFolder(form.Text2, created, ui)) return 0;
  form.Text2 = WithSeparator(form.Text2);
  const std::optional<std::uint64_t> size = SizeAskedFor(form, ui);
  if (!size) return 0;

  // Piece 1 next to the source counts, whatever the output folder.
  const std::optional<bool> taken = ShowingErrors(ui, {}, [&]() -> std::optional<bool> {
    return NameIsTaken(PathFromText(PieceNameOf(PathText(form.Text1), 1)));
  });
  if (taken == true) {
    ui.Message("Sly File Already Exists. Unable To Sly File.", Icon::Critical);
    End(ui);
    return 0;
  }
  SplitOptions options;
  options.outputFolder = form.Text2;
  options.checksum = form.Check1;
  SplitResult result;
  if (taken) result = SplitFile(form.Text1, *size, options, ui);
  if (result.declined) return 0;
  const std::int16_t pieces = result.pieces;
  if (pieces < 1) {
    if (afterFailure == AfterFailure::End ||
        AskYesNo(ui, "Unable To Sly File. Do You Want To Exit?"))
      End(ui);
    return 0;
  }
  ui.TellPlace(form.Text2 / PathFromText(PieceNameOf(PathText(form.Text1.filename()), 1)));
  ui.Message("File Successfully Sly.", Icon::Information);
  End(ui);
  return pieces;
}

}  // namespace slyver
