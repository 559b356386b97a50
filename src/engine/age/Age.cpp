#include "engine/age/Age.h"

#include <gcrypt.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>
#include <vector>

#include "engine/base/FileError.h"
#include "engine/base/Gcrypt.h"
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

/// The digits of base 64, without padding.
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

/// The bytes of `length` in base 64; nothing for any text but the one that ToBase64() makes.
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

/// A message's authentication code by SHA-256, or one step of a key derivation.
Secret Hmac(std::string_view key, std::initializer_list<std::string_view> message) {
  gcry_md_hd_t handle = nullptr;
  Require(gcry_md_open(&handle, GCRY_MD_SHA256, GCRY_MD_FLAG_HMAC));
  const std::unique_ptr<gcry_md_handle, decltype(&gcry_md_close)> closing(handle, gcry_md_close);
  Require(gcry_md_setkey(handle, key.data(), key.size()));
  for (const std::string_view part : message) gcry_md_write(handle, part.data(), part.size());
  return std::string_view(reinterpret_cast<const char*>(gcry_md_read(handle, GCRY_MD_SHA256)),
                          keyLength);
}

/// HKDF by SHA-256: a key of 32 bytes for one purpose.
Secret DerivedKey(const Secret& fileKey, std::string_view salt, std::string_view purpose) {
  // No salt counts as zeros.
  static constexpr std::array<char, keyLength> noSalt = {};
  const Secret extracted =
      Hmac(salt.empty() ? std::string_view(noSalt.data(), noSalt.size()) : salt, {fileKey.Text()});
  return Hmac(extracted.Text(), {purpose, "\x01"});
}

/// The key that a passphrase stands for.
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

  /// Enciphers all of `bytes` but the last 16, and puts their authentication there.
  void Seal(std::span<char> bytes) const {
    const std::span<char> text = bytes.first(bytes.size() - tagLength);
    Require(gcry_cipher_encrypt(handle_.get(), text.data(), text.size(), nullptr, 0));
    Require(gcry_cipher_gettag(handle_.get(), bytes.last(tagLength).data(), tagLength));
  }

  /// Deciphers what Seal() made; false when it is not authentic.
  bool Open(std::span<char> bytes) const {
    const std::span<char> text = bytes.first(bytes.size() - tagLength);
    Require(gcry_cipher_decrypt(handle_.get(), text.data(), text.size(), nullptr, 0));
    const gcry_error_t error =
        gcry_cipher_checktag(handle_.get(), bytes.last(tagLength).data(), tagLength);
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

/// A chunk's nonce: its number in 11 bytes, the highest first, and whether it is the last one.
ChunkNonce NonceOf(std::uint64_t number, bool isLast) {
  ChunkNonce nonce = {};
  for (std::size_t i = 10; number > 0; --i, number >>= 8U)
    nonce.at(i) = static_cast<char>(number & 255U);
  nonce.back() = isLast ? '\1' : '\0';
  return nonce;
}

class Sealing final : public RangeCipher {
 public:
  explicit Sealing(const Secret& key) : key_(key) {}
  std::size_t SourceChunk() const override { return plainChunk; }
  std::size_t TargetChunk() const override { return sealedChunk; }
  std::size_t Convert(std::uint64_t number, bool isLast, std::span<char> buffer,
                      std::size_t size) const override {
    Cipher(key_, NonceOf(number, isLast)).Seal(buffer.first(size + tagLength));
    return size + tagLength;
  }

 private:
  const Secret key_;
};

class Opening final : public RangeCipher {
 public:
  Opening(const Secret& key, std::string name) : key_(key), name_(std::move(name)) {}
  std::size_t SourceChunk() const override { return sealedChunk; }
  std::size_t TargetChunk() const override { return plainChunk; }
  std::size_t Convert(std::uint64_t number, bool isLast, std::span<char> buffer,
                      std::size_t size) const override {
    if (!Cipher(key_, NonceOf(number, isLast)).Open(buffer.first(size))) ThrowDamaged(name_);
    return size - tagLength;
  }

 private:
  const Secret key_;
  const std::string name_;
};

/// A text's lines, each ended by a line feed.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}
  /// The next line without its end; nothing where the text ends before.
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

/// One wrapping of the file's key.
struct Stanza {
  std::vector<std::string_view> words;
  std::string body;  ///< In base 64.
};

/// The words of a line, one blank apart; nothing when one is empty or has other than visible
/// characters.
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

/// What a header says, before it is looked at what that means.
struct RawHeader {
  std::vector<Stanza> stanzas;
  std::string_view end;       ///< Its last line.
  std::size_t endOffset = 0;  ///< Where that begins.
  std::size_t length = 0;
};

/// Thrown where a header is not as the format prescribes, and where the text ends before it does.
struct Malformed {};
struct TextEnds {};

std::string_view NextLine(Lines& lines) {
  const std::optional<std::string_view> line = lines.Next();
  if (!line) throw TextEnds{};
  return *line;
}

/// Reads a stanza whose first line is `line`.
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

/// The work factor: a decimal number, at least 1, without leading zeros. One that no number of this
/// program holds is far too high.
int WorkFactorOf(std::string_view digits) {
  if (digits.empty() || digits.front() == '0' ||
      digits.find_first_not_of("0123456789") != std::string_view::npos)
    throw Malformed{};
  int factor = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), factor);
  return error == std::errc{} ? factor : std::numeric_limits<int>::max();
}

/// The bytes of `length` that `text` stands for.
std::string Decoded(std::string_view text, std::size_t length) {
  std::optional<std::string> bytes = FromBase64(text, length);
  if (!bytes) throw Malformed{};
  return std::move(*bytes);
}

bool IsForPassphrase(const Stanza& stanza) {
  return stanza.words.front() == passphraseType;
}

/// The header, which has one stanza, for a passphrase; `text` begins with it.
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

/// Whether so many bytes are chunks as a writer makes them: none is empty but the only one.
bool AreChunks(std::uint64_t length) {
  const std::uint64_t last = length % sealedChunk;
  return length == tagLength || (length > tagLength && (last == 0 || last > tagLength));
}

/// In a time that does not tell where they differ.
bool AreEqual(std::string_view one, std::string_view other) {
  unsigned difference = one.size() == other.size() ? 0 : 1;
  for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i)
    difference |=
        static_cast<std::uint8_t>(one[i]) ^ unsigned { static_cast<std::uint8_t>(other[i]) };
  return difference == 0;
}

}  // namespace

NewAgeFile BeginAgeFile(std::string_view passphrase, int workFactor) {
  InitGcrypt();
  const Secret fileKey = Secret::Of(RandomBytes(fileKeyLength));
  const std::string salt = RandomBytes(saltLength);
  const std::string nonce = RandomBytes(nonceLength);
  std::string wrapped = fileKey.Text() + std::string(tagLength, '\0');
  Cipher(PassphraseKey(passphrase, salt, workFactor), ChunkNonce{}).Seal(wrapped);
  std::string text = std::string(versionLine) + '\n' + std::string(stanzaMark) +
                     std::string(passphraseType) + ' ' + ToBase64(salt) + ' ' +
                     std::to_string(workFactor) + '\n' + ToBase64(wrapped) + '\n' +
                     std::string(endMark);
  const Secret mac = Hmac(DerivedKey(fileKey, {}, "header").Text(), {text});
  text += ' ' + ToBase64(mac.Text()) + '\n' + nonce;
  return {text, std::make_shared<Sealing>(DerivedKey(fileKey, nonce, "payload"))};
}

std::optional<AgeHeader> ReadAgeHeader(std::string_view beginning, std::uint64_t length,
                                       std::string_view name) {
  try {
    const RawHeader raw = ReadRawHeader(beginning);
    if (std::none_of(raw.stanzas.begin(), raw.stanzas.end(), IsForPassphrase)) return std::nullopt;
    AgeHeader header = PassphraseHeader(beginning, raw);
    header.name = name;
    if (header.workFactor > ageMostWork)
      throw Error(header.name + " Asks For Too Much Work (2 To The Power Of " +
                  std::string(raw.stanzas.front().words[2]) + ").");
    if (length >= header.length && AreChunks(length - header.length)) return header;
  } catch (const Malformed&) {
    // As below.
  } catch (const TextEnds&) {
    // Only a header for many keys is so long.
    if (beginning.size() < length) return std::nullopt;
  }
  ThrowDamaged(std::string(name));
}

std::shared_ptr<const RangeCipher> UnlockAge(const AgeHeader& header, std::string_view passphrase) {
  InitGcrypt();
  std::string wrapped = header.wrappedKey;
  if (!Cipher(PassphraseKey(passphrase, header.salt, header.workFactor), ChunkNonce{})
           .Open(wrapped))
    return nullptr;
  const Secret unwrapped = Secret::Of(std::move(wrapped));
  const Secret fileKey = std::string_view(unwrapped.Text()).substr(0, fileKeyLength);
  const Secret mac = Hmac(DerivedKey(fileKey, {}, "header").Text(), {header.text});
  if (!AreEqual(mac.Text(), header.mac)) ThrowDamaged(header.name);
  return std::make_shared<Opening>(DerivedKey(fileKey, header.nonce, "payload"), header.name);
}

}  // namespace slyver
