#include "engine/split/ChecksumFile.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace slyver {
namespace {

/// The digests that are read from `text`, each by its last digit; "?" for a text that is not
/// understood, "" for one that tells of no pieces.
std::string Read(std::string_view text, std::size_t part) {
  ChecksumReader reader("f");
  for (std::size_t i = 0; i < text.size(); i += part) (void)reader.Add(text.substr(i, part));
  const Checksums read = reader.Finish();
  std::string digits = read.kind == Checksums::Kind::NotUnderstood ? "?" : "";
  for (const Digest& digest : read.digests) digits += "0123456789abcdef"[digest.back() & 15U];
  return digits;
}

TEST(ChecksumFile, IsUnderstoodInWhateverPartsItComes) {
  const std::string d(63, 'a');
  const std::vector<std::pair<std::string, std::string>> cases = {
      {d + "1  f.1.sly\n" + d + "2 *f.2.sly\r\n" + d + "B  f.3.SLY", "12b"},
      {"# made by hand\n\r\n" + d + "2  f.2.sly\n" + d + "1  f.1.sly\n\n", "12"},
      {d + "9  f\n", ""},
      {"\xEF\xBB\xBF" + d + "1  f.1.sly\n", "1"},
      {d + "1  f.1.sly\n\xEF\xBB\xBF" + d + "2  f.2.sly\n", "?"},
      {"SHA256 (f.1.sly) = " + d + "1\nSHA256 (./f.2.sly) = " + d + "2\r\n", "12"},
      {"SHA256 (f.1.sly) = " + d + "11\n", "?"},
      {"SHA256 () = " + d + "1\n", "?"},
      {d + "1  f.1.sly\n" + d + "1  f.32768.sly\n", "?"},
      {std::string(3000, '#') + "\n" + d + "1  f.1.sly\n", "?"}};
  for (const auto& [text, digits] : cases)
    for (const std::size_t part : {1, 7, 10000}) EXPECT_EQ(Read(text, part), digits) << text;
}

}  // namespace
}  // namespace slyver
