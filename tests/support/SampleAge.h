#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/age/Age.h"
#include "fuzz/Require.h"

namespace slyver {

/// An age file that was published with the format: the plain bytes are "age".
inline constexpr const char* sampleAgePassphrase = "password";
inline const std::string sampleAge =
    "age-encryption.org/v1\n"
    "-> scrypt rF0/NwblUHHTpgQgRpe5CQ 10\n"
    "gUjEymFKMVXQEKdMMHL24oYexjE3TIC0O0zGSqJ2aUY\n"
    "--- IOXiQYStkoT1mvZW2tFOqZdhRVvj58egABx/sWfZQbc\n"
    "\x1B\x35\xC6\xE6\x87\xDD" +
    std::string(1, '\0') +
    "\xDA:\xC3y\xAC\x9Ft,!\xFD\x18Z\x1B\x9E=\xEDs\x9D\x14\xACj\x9AP\x12M\xB8"
    "f\xD8";

/// A text as a source.
class TextSource final : public Source {
 public:
  explicit TextSource(std::string_view text) : text_(text) {}
  std::uint64_t Length() const override { return text_.size(); }
  std::unique_ptr<Reader> NewReader() const override { return std::make_unique<Copier>(text_); }

 private:
  class Copier final : public Reader {
   public:
    explicit Copier(const std::string& text) : text_(text) {}
    void Read(std::uint64_t offset, std::span<char> buffer) override {
      Require(offset + buffer.size() <= text_.size());
      text_.copy(buffer.data(), buffer.size(), static_cast<std::size_t>(offset));
    }
    void ThrowIfChanged() override {}

   private:
    const std::string& text_;
  };

  const std::string text_;
};

/// All bytes of a source, read by `step` bytes.
inline std::string TextOf(const Source& source, std::size_t step = 50000) {
  std::string all(static_cast<std::size_t>(source.Length()), '\0');
  const auto reader = source.NewReader();
  for (std::size_t at = 0; at < all.size(); at += step)
    reader->Read(at, std::span(all).subspan(at, std::min(step, all.size() - at)));
  return all;
}

/// The age file of a text, at little cost.
inline std::string AgeFileOf(std::string_view plain, std::string_view passphrase) {
  return TextOf(*EncryptedWithAge(std::make_shared<TextSource>(plain), passphrase, 1));
}

/// The plain bytes of an age file whose header was read; `nullopt` for a wrong passphrase.
inline std::optional<std::string> Decrypted(std::string_view file, const AgeHeader& header,
                                            std::string_view passphrase) {
  const auto plain = DecryptedWithAge(std::make_shared<TextSource>(file), header.length,
                                      file.size() - header.length, header, passphrase);
  return plain ? std::optional(TextOf(*plain)) : std::nullopt;
}

}  // namespace slyver
