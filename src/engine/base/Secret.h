#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace slyver {

/// Overwrites a text's memory and empties it. The compiler cannot optimize this away.
template <typename Char>
void Wipe(std::basic_string<Char>& text) {
  text.resize(text.capacity());
  for (volatile Char& c : text) c = Char();
  text.clear();
}

/// A secret text, wiped from memory when it is replaced or destroyed.
class Secret {
 public:
  Secret() = default;
  /// Copies `text`; the caller wipes the original.
  template <typename Text>
  requires std::convertible_to<const Text&, std::string_view>
  // Implicit, so that forms can be filled with plain texts.
  // NOLINTNEXTLINE(google-explicit-constructor)
  Secret(const Text& text) : text_(std::string_view(text)) {}
  /// Takes `text` over and wipes it.
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
