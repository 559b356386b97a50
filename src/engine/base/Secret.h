#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace slyver {

/// Overwrites a text's memory, also where the compiler sees that nobody reads it again, and empties
/// the text.
template <typename Char>
void Wipe(std::basic_string<Char>& text) {
  text.resize(text.capacity());
  for (volatile Char& c : text) c = Char();
  text.clear();
}

/// A text that nobody else may come to know: what it leaves in memory is wiped.
class Secret {
 public:
  Secret() = default;
  /// Keeps a copy of `text`; whoever holds the text wipes it.
  template <typename Text>
  requires std::convertible_to<const Text&, std::string_view>
  // Forms are filled with plain texts.
  // NOLINTNEXTLINE(google-explicit-constructor)
  Secret(const Text& text) : text_(std::string_view(text)) {}
  /// Takes the text over.
  static Secret Of(std::string&& text) {
    Secret secret = text;
    Wipe(text);
    return secret;
  }
  Secret(const Secret&) = default;
  Secret& operator=(const Secret& other) {
    if (this == &other) return *this;
    Wipe(text_);
    text_ = other.text_;
    return *this;
  }
  ~Secret() { Wipe(text_); }

  const std::string& Text() const { return text_; }
  bool operator==(const Secret& other) const = default;

 private:
  std::string text_;
};

}  // namespace slyver
