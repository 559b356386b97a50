#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace slyver {

/// What a size field or a count field shows when the file cannot be divided so.
inline constexpr std::string_view unableToDivide = "Unable To Divide File";

/// What typing into one of the two fields does to the other.
struct FieldChange {
  std::optional<std::string> other;  ///< The other field's new text; nothing leaves it as it is.
  bool clearTyped = false;           ///< The field typed into is to be emptied.
  bool askForWholeNumber = false;    ///< Show "Please Enter Whole Numbers.".
};

/// The text of the size field for the number of pieces `count`: the length divided by the count,
/// rounded up to whole bytes, so that there are never more pieces than asked for. The marker when
/// there is nothing to divide: a count of 1, or one not below the length. A count of "0" or none
/// empties the size. While `size`, the field's present text, shows the marker, it stays until then.
/// `length` is the file's, in bytes.
FieldChange SizeFromCount(std::string_view count, std::string_view size, std::uint64_t length);

/// The text of the count field for the piece size `size` in bytes: the mirror image. A size of "1"
/// and the marker change nothing; "0" or none empties both fields.
FieldChange CountFromSize(std::string_view size, std::uint64_t length);

/// The number that a field holds, as a piece size rounded to whole bytes (a half to the even
/// neighbour). Nothing when the text is not a number or is below 0 or beyond 64 bits.
std::optional<std::uint64_t> WholeBytes(std::string_view text);

}  // namespace slyver
