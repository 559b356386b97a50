#include "engine/age/Age.h"

#include <gcrypt.h>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

#include "engine/base/FileError.h"
#include "engine/base/Gcrypt.h"
#include "engine/base/Numbers.h"
#include "engine/base/Secret.h"

namespace slyver {

namespace {

constexpr std::string_view versionLine = "age-encryption.org/v1";
constexpr std::string_view stanzaMark = "-> ";
constexpr std::string_view endMark = "---";
constexpr std::string_view passphraseType = "scrypt";
constexpr std::string_view saltLabel = "age-encryption.org/v1/scrypt";
constexpr std::string_view base64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t stanzaColumns = 64;
constexpr std::size_t saltLength = 16;
constexpr std::size_t fileKeyLength = 16;
constexpr std::size_t keyLength = 32;
constexpr std::size_t nonceLength = 16;
constexpr std::size_t tagLength = 16;
constexpr std::size_t plainChunk = 65536;
constexpr std::size_t sealedChunk = plainChunk + tagLength;

using ChunkNonce = std::array<char, 12>;

void Require(gcry_error_t error) {
  if (gcry_err_code(error) == GPG_ERR_ENOMEM) throw Error("Not Enough Memory For The Passphrase.");
  if (error != 0) throw Error(std::string("Encryption: ") + gcry_strerror(error));
}

[[noreturn]] void ThrowDamaged(const std::string& name) {
  throw Error(name + " Is Damaged.");
}

std::string RandomBytes(std::size_t count) {
  std::string bytes(count, '\0');
  gcry_randomize(bytes.data(), bytes.size(), GCRY_STRONG_RANDOM);
  return bytes;
}

/// Encodes bytes in base 64 without padding.
std::string ToBase64(std::string_view bytes) {
  std::string text;
  unsigned bits = 0;
  unsigned count = 0;
  for (const char c : bytes) {
    bits = bits << 8U | static_cast<std::uint8_t>(c);
    for (count += 8; count >= 6; count -= 6) text += base64Digits[bits >> (count - 6) & 63U];
  }
  if (count > 0) text += base64Digits[bits << (6 - count) & 63U];
  return text;
}

/// Decodes `length` bytes from base 64; `nullopt` for a text that ToBase64() would not return.
std::optional<std::string> FromBase64(std::string_view text, std::size_t length) {
  std::string bytes;
  unsigned bits = 0;
  unsigned count = 0;
  for (const char c : text) {
    const std::size_t digit = base64Digits.find(c);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = bits << 6U | static_cast<unsigned>(digit);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 255U);
  }
  if (bytes.size() != length || ToBase64(bytes) != text) return std::nullopt;
  return bytes;
}

/// Computes HMAC-SHA-256.
Secret Hmac(std::string_view key, std::initializer_list<std::string_view> message) {
  gcry_mac_hd_t handle = nullptr;
  Require(gcry_mac_open(&handle, GCRY_MAC_HMAC_SHA256, 0, nullptr));
  const std::unique_ptr<gcry_mac_handle, decltype(&gcry_mac_close)> closing(handle, gcry_mac_close);
  Require(gcry_mac_setkey(handle, key.data(), key.size()));
  for (const std::string_view part : message)
    Require(gcry_mac_write(handle, part.data(), part.size()));
  std::string code(keyLength, '\0');
  std::size_t length = code.size();
  Require(gcry_mac_read(handle, code.data(), &length));
  return Secret::Of(std::move(code));
}

/// Derives a key of 32 bytes for one purpose by HKDF-SHA-256.
Secret DerivedKey(const Secret& fileKey, std::string_view salt, std::string_view purpose) {
  // HKDF defines a missing salt as zeros.
  static constexpr std::array<char, keyLength> noSalt = {};
  const Secret extracted =
      Hmac(salt.empty() ? std::string_view(noSalt.data(), noSalt.size()) : salt, {fileKey.Text()});
  return Hmac(extracted.Text(), {purpose, "\x01"});
}

/// Derives a key of 32 bytes from a passphrase by scrypt.
Secret PassphraseKey(std::string_view passphrase, std::string_view salt, int workFactor) {
  const std::string labelled = std::string(saltLabel) + std::string(salt);
  std::string key(keyLength, '\0');
  Require(gcry_kdf_derive(passphrase.data(), passphrase.size(), GCRY_KDF_SCRYPT, 1 << workFactor,
                          labelled.data(), labelled.size(), 1, key.size(), key.data()));
  return Secret::Of(std::move(key));
}

/// ChaCha20-Poly1305 under one key and nonce, for one use.
class Cipher {
 public:
  Cipher(const Secret& key, const ChunkNonce& nonce) {
    gcry_cipher_hd_t handle = nullptr;
    Require(gcry_cipher_open(&handle, GCRY_CIPHER_CHACHA20, GCRY_CIPHER_MODE_POLY1305, 0));
    handle_.reset(handle);
    Require(gcry_cipher_setkey(handle, key.Text().data(), key.Text().size()));
    Require(gcry_cipher_setiv(handle, nonce.data(), nonce.size()));
    Require(gcry_cipher_final(handle));
  }

  /// Encrypts `text`; `sealed` has room for its tag too.
  void Seal(std::span<const char> text, std::span<char> sealed) const {
    Require(
        gcry_cipher_encrypt(handle_.get(), sealed.data(), text.size(), text.data(), text.size()));
    Require(gcry_cipher_gettag(handle_.get(), sealed.last(tagLength).data(), tagLength));
  }

  /// Decrypts what Seal() wrote; false if it is not authentic.
  bool Open(std::span<const char> sealed, std::span<char> text) const {
    Require(
        gcry_cipher_decrypt(handle_.get(), text.data(), text.size(), sealed.data(), text.size()));
    const gcry_error_t error =
        gcry_cipher_checktag(handle_.get(), sealed.last(tagLength).data(), tagLength);
    if (gcry_err_code(error) == GPG_ERR_CHECKSUM) return false;
    Require(error);
    return true;
  }

 private:
  struct Close {
    void operator()(gcry_cipher_handle* handle) const { gcry_cipher_close(handle); }
  };
  std::unique_ptr<gcry_cipher_handle, Close> handle_;
};

/// Returns a chunk's nonce: its number in 11 bytes, big endian, and 1 for the last chunk.
ChunkNonce NonceOf(std::uint64_t number, bool isLast) {
  ChunkNonce nonce = {};
  for (std::size_t i = 10; number > 0; --i, number >>= 8U)
    nonce.at(i) = static_cast<char>(number & 255U);
  nonce.back() = isLast ? '\1' : '\0';
  return nonce;
}

/// How chunks change.
enum class Direction { Encrypt, Decrypt };

/// A text as it is, then chunks made of those in another source's bytes.
class Chunks final : public Source {
 public:
  struct From {
    std::shared_ptr<const Source> source;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
  };

  Chunks(Direction direction, From from, const Secret& key, std::string text, std::string name)
      : direction_(direction),
        from_(std::move(from)),
        key_(key),
        text_(std::move(text)),
        name_(std::move(name)) {}

  std::uint64_t Length() const override { return text_.size() + LengthOfChunks(); }
  std::unique_ptr<Reader> NewReader() const override {
    return std::make_unique<ChunkReader>(*this);
  }
  std::uint64_t Cut(std::uint64_t begin, std::uint64_t end) const override {
    if (end <= text_.size()) return end;
    const std::uint64_t cut = end - (end - text_.size()) % ToChunk();
    return cut > begin ? cut : end;
  }

 private:
  std::size_t FromChunk() const { return Encrypts() ? plainChunk : sealedChunk; }
  std::size_t ToChunk() const { return Encrypts() ? sealedChunk : plainChunk; }
  bool Encrypts() const { return direction_ == Direction::Encrypt; }

  std::uint64_t LengthOfChunks() const {
    // No bytes are one empty chunk.
    const std::uint64_t count =
        std::max<std::uint64_t>(1, (from_.length + FromChunk() - 1) / FromChunk());
    return Encrypts() ? from_.length + count * tagLength : from_.length - count * tagLength;
  }

  class ChunkReader final : public Reader {
   public:
    explicit ChunkReader(const Chunks& chunks)
        : chunks_(chunks), from_(chunks.from_.source->NewReader()), read_(chunks.FromChunk()) {
      if (chunks.Length() == 0) Make(0, {});  // Nobody will read it.
    }

    void Read(std::uint64_t offset, std::span<char> buffer) override {
      const std::string& text = chunks_.text_;
      if (offset < text.size()) {
        const std::size_t copied = text.copy(buffer.data(), buffer.size(), offset);
        offset += copied;
        buffer = buffer.subspan(copied);
      }
      for (offset -= text.size(); !buffer.empty();) {
        const std::uint64_t number = offset / chunks_.ToChunk();
        const auto within = static_cast<std::size_t>(offset % chunks_.ToChunk());
        const auto length = static_cast<std::size_t>(
            std::min<std::uint64_t>(chunks_.ToChunk(), chunks_.LengthOfChunks() - offset + within));
        const std::size_t size = std::min(buffer.size(), length - within);
        if (size == length) {
          Make(number, buffer.first(size));
        } else {
          if (made_.empty() || number != number_) {
            made_.resize(length);
            Make(number, made_);
            number_ = number;
          }
          std::copy_n(made_.begin() + static_cast<std::ptrdiff_t>(within), size, buffer.begin());
        }
        offset += size;
        buffer = buffer.subspan(size);
      }
    }

    void ThrowIfChanged() override { from_->ThrowIfChanged(); }

   private:
    /// Makes chunk `number`, all of it.
    void Make(std::uint64_t number, std::span<char> made) {
      const std::uint64_t offset = number * chunks_.FromChunk();
      const std::uint64_t left = chunks_.from_.length - offset;
      const bool isLast = left <= chunks_.FromChunk();
      const auto bytes =
          std::span(read_).first(isLast ? static_cast<std::size_t>(left) : chunks_.FromChunk());
      from_->Read(chunks_.from_.offset + offset, bytes);
      const Cipher cipher(chunks_.key_, NonceOf(number, isLast));
      if (chunks_.Encrypts())
        cipher.Seal(bytes, made);
      else if (!cipher.Open(bytes, made))
        ThrowDamaged(chunks_.name_);
    }

    const Chunks& chunks_;
    const std::unique_ptr<Reader> from_;
    std::vector<char> read_;
    std::vector<char> made_;  ///< Chunk `number_`, of which a part was read; empty for none.
    std::uint64_t number_ = 0;
  };

  const Direction direction_;
  const From from_;
  const Secret key_;
  const std::string text_;
  const std::string name_;
};

/// The lines of a text, each with a line feed.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}
  /// Returns the next line without its line feed; `nullopt` if the text ends before it.
  std::optional<std::string_view> Next() {
    const std::size_t end = text_.find('\n', used_);
    if (end == std::string_view::npos) return std::nullopt;
    const std::size_t begin = std::exchange(used_, end + 1);
    return text_.substr(begin, end - begin);
  }
  std::size_t Used() const { return used_; }

 private:
  std::string_view text_;
  std::size_t used_ = 0;
};

/// One wrapped copy of the file key.
struct Stanza {
  std::vector<std::string_view> words;
  std::string body;  ///< In base 64.
};

/// Splits a line at each blank; `nullopt` if a word is empty or has characters that are not visible
/// ASCII.
std::optional<std::vector<std::string_view>> WordsOf(std::string_view line) {
  std::vector<std::string_view> words;
  for (std::size_t begin = 0; begin <= line.size();) {
    const std::string_view word = line.substr(begin, line.find(' ', begin) - begin);
    const auto visible = [](char c) { return c > ' ' && c < '\x7F'; };
    if (word.empty() || !std::all_of(word.begin(), word.end(), visible)) return std::nullopt;
    words.push_back(word);
    begin += word.size() + 1;
  }
  return words;
}

/// A header, parsed but not interpreted.
struct RawHeader {
  std::vector<Stanza> stanzas;
  std::string_view end;       ///< Its last line.
  std::size_t endOffset = 0;  ///< The offset of `end`.
  std::size_t length = 0;
};

/// Thrown for a header that violates the format.
struct Malformed {};
/// Thrown if the text ends before the header.
struct TextEnds {};

std::string_view NextLine(Lines& lines) {
  const std::optional<std::string_view> line = lines.Next();
  if (!line) throw TextEnds{};
  return *line;
}

/// Reads the stanza with the first line `line`.
Stanza ReadStanza(std::string_view line, Lines& lines) {
  auto words = WordsOf(line.substr(stanzaMark.size()));
  if (!words) throw Malformed{};
  Stanza stanza{std::move(*words), {}};
  std::string_view part;
  do {
    part = NextLine(lines);
    if (part.size() > stanzaColumns) throw Malformed{};
    stanza.body += part;
  } while (part.size() == stanzaColumns);
  if (!FromBase64(stanza.body, stanza.body.size() * 3 / 4)) throw Malformed{};
  return stanza;
}

RawHeader ReadRawHeader(std::string_view text) {
  RawHeader header;
  Lines lines(text);
  if (NextLine(lines) != versionLine) throw Malformed{};
  while (true) {
    header.endOffset = lines.Used();
    header.end = NextLine(lines);
    if (!header.end.starts_with(stanzaMark)) break;
    header.stanzas.push_back(ReadStanza(header.end, lines));
  }
  header.length = lines.Used();
  return header;
}

/// Parses a work factor: a decimal number, at least 1, without leading zeros. INT_MAX if larger.
int WorkFactorOf(std::string_view digits) {
  if (digits.empty() || digits.front() == '0' ||
      digits.find_first_not_of("0123456789") != std::string_view::npos)
    throw Malformed{};
  return NumberIn<int>(digits).value_or(std::numeric_limits<int>::max());
}

/// Decodes `length` bytes from base 64. Throws Malformed.
std::string Decoded(std::string_view text, std::size_t length) {
  std::optional<std::string> bytes = FromBase64(text, length);
  if (!bytes) throw Malformed{};
  return std::move(*bytes);
}

bool IsForPassphrase(const Stanza& stanza) {
  return stanza.words.front() == passphraseType;
}

/// Interprets a header with a stanza for a passphrase, which must be the only one.
AgeHeader PassphraseHeader(std::string_view text, const RawHeader& raw) {
  const Stanza& stanza = raw.stanzas.front();
  constexpr std::size_t endWords = 4;  // "--- "
  if (raw.stanzas.size() > 1 || stanza.words.size() != 3 ||
      !raw.end.starts_with(std::string(endMark) + ' '))
    throw Malformed{};
  AgeHeader header;
  header.text = text.substr(0, raw.endOffset + endMark.size());
  header.salt = Decoded(stanza.words[1], saltLength);
  header.workFactor = WorkFactorOf(stanza.words[2]);
  header.wrappedKey = Decoded(stanza.body, fileKeyLength + tagLength);
  header.mac = Decoded(raw.end.substr(endWords), keyLength);
  header.nonce = text.substr(raw.length, nonceLength);
  header.length = raw.length + nonceLength;
  return header;
}

/// True if so many bytes can be chunks: no chunk is empty but a single one.
bool AreChunks(std::uint64_t length) {
  const std::uint64_t last = length % sealedChunk;
  return length == tagLength || (length > tagLength && (last == 0 || last > tagLength));
}

/// Compares in constant time.
bool AreEqual(std::string_view one, std::string_view other) {
  unsigned difference = one.size() == other.size() ? 0 : 1;
  for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i)
    difference |=
        static_cast<std::uint8_t>(one[i]) ^ unsigned { static_cast<std::uint8_t>(other[i]) };
  return difference == 0;
}

}  // namespace

std::shared_ptr<const Source> EncryptedWithAge(std::shared_ptr<const Source> plain,
                                               std::string_view passphrase, int workFactor) {
  InitGcrypt();
  const Secret fileKey = Secret::Of(RandomBytes(fileKeyLength));
  const std::string salt = RandomBytes(saltLength);
  const std::string nonce = RandomBytes(nonceLength);
  std::string wrapped(fileKeyLength + tagLength, '\0');
  Cipher(PassphraseKey(passphrase, salt, workFactor), ChunkNonce{}).Seal(fileKey.Text(), wrapped);
  std::string text = std::string(versionLine) + '\n' + std::string(stanzaMark) +
                     std::string(passphraseType) + ' ' + ToBase64(salt) + ' ' +
                     std::to_string(workFactor) + '\n' + ToBase64(wrapped) + '\n' +
                     std::string(endMark);
  const Secret mac = Hmac(DerivedKey(fileKey, {}, "header").Text(), {text});
  text += ' ' + ToBase64(mac.Text()) + '\n' + nonce;
  const std::uint64_t length = plain->Length();
  return std::make_shared<Chunks>(Direction::Encrypt, Chunks::From{std::move(plain), 0, length},
                                  DerivedKey(fileKey, nonce, "payload"), text, "");
}

std::optional<AgeHeader> ReadAgeHeader(std::string_view beginning, std::uint64_t length,
                                       std::string_view name) {
  try {
    const RawHeader raw = ReadRawHeader(beginning);
    if (std::none_of(raw.stanzas.begin(), raw.stanzas.end(), IsForPassphrase)) return std::nullopt;
    AgeHeader header = PassphraseHeader(beginning, raw);
    header.name = name;
    if (header.workFactor > ageMostWork)
      throw Error(header.name + " Needs Too Much Memory (Work Factor " +
                  std::string(raw.stanzas.front().words[2]) + "; Limit " +
                  std::to_string(ageMostWork) + ").");
    if (length >= header.length && AreChunks(length - header.length)) return header;
  } catch (const Malformed&) {
    // Damaged.
  } catch (const TextEnds&) {
    // Only a header for many keys is so long.
    if (beginning.size() < length) return std::nullopt;
  }
  ThrowDamaged(std::string(name));
}

std::shared_ptr<const Source> DecryptedWithAge(std::shared_ptr<const Source> source,
                                               std::uint64_t offset, std::uint64_t length,
                                               const AgeHeader& header,
                                               std::string_view passphrase) {
  InitGcrypt();
  std::string unwrapped(fileKeyLength, '\0');
  const bool opened =
      Cipher(PassphraseKey(passphrase, header.salt, header.workFactor), ChunkNonce{})
          .Open(header.wrappedKey, unwrapped);
  const Secret fileKey = Secret::Of(std::move(unwrapped));
  if (!opened) return nullptr;
  const Secret mac = Hmac(DerivedKey(fileKey, {}, "header").Text(), {header.text});
  if (!AreEqual(mac.Text(), header.mac)) ThrowDamaged(header.name);
  return std::make_shared<Chunks>(Direction::Decrypt,
                                  Chunks::From{std::move(source), offset, length},
                                  DerivedKey(fileKey, header.nonce, "payload"), "", header.name);
}

}  // namespace slyver
