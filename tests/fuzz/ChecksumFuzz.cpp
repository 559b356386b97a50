#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/split/ChecksumFile.h"
#include "engine/split/PieceName.h"
#include "fuzz/Require.h"

using namespace slyver;

/// The input is the length of the parts that a checksum file is read in, the name of the file that
/// was split, up to a line's end, and the checksum file's text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t part = data[0] + std::size_t{1};
  const std::string input(data + 1, data + size);
  const std::string name = input.substr(0, input.find('\n'));
  if (name.find('/') != std::string::npos) return 0;  // No file's name has one.
  const std::string_view text =
      std::string_view(input).substr(std::min(name.size() + 1, input.size()));

  ChecksumReader reader(name);
  bool understood = true;
  for (std::size_t i = 0; i < text.size(); i += part) understood = reader.Add(text.substr(i, part));
  const Checksums read = reader.Finish();
  Require(understood || read.kind == Checksums::Kind::NotUnderstood);
  Require(read.digests.empty() == (read.kind != Checksums::Kind::Understood));
  Require(read.digests.size() <= 32767 && read.digests.size() <= text.size() / 66);

  // What it has understood is what it would have written.
  ChecksumReader again(name);
  for (std::size_t i = 0; i < read.digests.size(); ++i)
    Require(again.Add(ChecksumLine(PieceNameOf(name, static_cast<int>(i) + 1), read.digests[i])));
  if (!read.digests.empty()) Require(again.Finish().digests == read.digests);
  return 0;
}
