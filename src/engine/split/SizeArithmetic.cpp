#include "engine/split/SizeArithmetic.h"

#include <cmath>

#include "engine/base/Numbers.h"

namespace slyver {

namespace {

std::string_view WithoutFinalPoint(std::string_view text) {
  if (text.ends_with('.')) text.remove_suffix(1);
  return text;
}

/// Returns `length` divided by the number in `text`, rounded up; `nullopt` unless the number is
/// above 0 and below `length`. Whole numbers are divided exactly.
std::optional<std::uint64_t> QuotientRoundedUp(std::uint64_t length, std::string_view text) {
  if (const auto whole = NumberIn<std::uint64_t>(text)) {
    if (*whole == 0 || *whole >= length) return std::nullopt;
    return length / *whole + (length % *whole > 0 ? 1 : 0);
  }
  const auto number = NumberIn<double>(text);
  const auto dividend = static_cast<double>(length);
  if (!number || !(*number >= 1) || *number >= dividend) return std::nullopt;
  return static_cast<std::uint64_t>(std::ceil(dividend / *number));
}

FieldChange Divide(std::string_view text, std::uint64_t length) {
  const auto quotient = QuotientRoundedUp(length, WithoutFinalPoint(text));
  return {.other = quotient ? std::to_string(*quotient) : std::string(unableToDivide),
          .askForWholeNumber = text.ends_with('.')};
}

}  // namespace

FieldChange SizeFromCount(std::string_view count, std::string_view size, std::uint64_t length) {
  if (count == "1") return {.other = std::string(unableToDivide)};
  if (count == "0" || count.empty()) return {.other = ""};
  if (size.starts_with("Un")) return {};
  return Divide(count, length);
}

FieldChange CountFromSize(std::string_view size, std::uint64_t length) {
  if (size == "0" || size.empty()) return {.other = "", .clearTyped = true};
  if (size == "1" || size.starts_with("Un")) return {};
  // A fraction counts as it will be cut.
  const std::optional<std::uint64_t> whole = WholeBytes(size);
  FieldChange change = Divide(whole ? std::to_string(*whole) : std::string(size), length);
  change.askForWholeNumber = size.ends_with('.');
  return change;
}

std::optional<std::uint64_t> WholeBytes(std::string_view text) {
  text = WithoutFinalPoint(text);
  if (const auto whole = NumberIn<std::uint64_t>(text)) return whole;
  const auto number = NumberIn<double>(text);
  constexpr double beyond = 18446744073709551616.0;
  if (!number || !(*number >= 0)) return std::nullopt;
  const double rounded = std::nearbyint(*number);
  if (!(rounded < beyond)) return std::nullopt;
  return static_cast<std::uint64_t>(rounded);
}

}  // namespace slyver
