#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace slyver {

/// The marker in a size or count field if the file cannot be divided so.
inline constexpr std::string_view unableToDivide = "Unable To Divide File";

/// The effect of typing into one of the two fields.
struct FieldChange {
  std::optional<std::string> other;  ///< The other field's new text; `nullopt` for no change.
  bool clearTyped = false;           ///< Empty the field typed into.
  bool askForWholeNumber = false;    ///< Show "Please Enter Whole Numbers.".
};

/// Computes the size field for the number of pieces `count`: `length` bytes divided by it, rounded
/// up, so that there are never more pieces than asked for. The marker for a count of 1, or one not
/// below the length. A count of "0" or none empties the size. Otherwise a marker in `size`, the
/// field's text, stays.
FieldChange SizeFromCount(std::string_view count, std::string_view size, std::uint64_t length);

/// Computes the count field for the piece size `size` in bytes. A size of "1" and the marker change
/// nothing; "0" or none empties both fields.
FieldChange CountFromSize(std::string_view size, std::uint64_t length);

/// Returns a field's number rounded to whole bytes, a half to the even neighbour. `nullopt` if it
/// is not a number, is below 0 or needs more than 64 bits.
std::optional<std::uint64_t> WholeBytes(std::string_view text);

}  // namespace slyver
