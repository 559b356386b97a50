#include "engine/talk/ProgressText.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace slyver {

namespace {

std::string Formatted(const char* format, double number, const char* unit) {
  std::array<char, 64> text = {};
  (void)std::snprintf(text.data(), text.size(), format, number, unit);
  return text.data();
}

/// Hours, minutes and seconds as "1:02:03", or "2:03" below an hour.
std::string ReadableSeconds(double seconds) {
  const auto total = static_cast<unsigned long>(std::lround(seconds));
  std::array<char, 32> text = {};
  const unsigned long hours = total / 3600;
  (void)(hours > 0 ? std::snprintf(text.data(), text.size(), "%lu:%02lu:%02lu", hours,
                                   total / 60 % 60, total % 60)
                   : std::snprintf(text.data(), text.size(), "%lu:%02lu", total / 60, total % 60));
  return text.data();
}

}  // namespace

std::string ReadableBytes(double bytes) {
  if (bytes < 1000) return Formatted("%.0f%s", bytes, " bytes");
  static constexpr std::array<const char*, 6> units = {" kB", " MB", " GB", " TB", " PB", " EB"};
  std::size_t unit = 0;
  for (bytes /= 1000; bytes >= 999.5 && unit + 1 < units.size(); ++unit) bytes /= 1000;
  return Formatted(bytes < 9.995   ? "%.2f%s"
                   : bytes < 99.95 ? "%.1f%s"
                                   : "%.0f%s",
                   bytes, units.at(unit));
}

std::string ProgressLine(const Progress& progress, double seconds) {
  if (progress.searched > 0) return "Searching ... " + std::to_string(progress.searched) + " names";
  const auto done = static_cast<double>(progress.bytesDone);
  const auto total = static_cast<double>(progress.bytesTotal);
  std::string line = Formatted("%3.0f%%%s", total > 0 ? done / total * 100 : 0, "  ") +
                     ReadableBytes(done) + " of " + ReadableBytes(total);
  if (seconds < 0.5 || done <= 0) return line;
  const double rate = done / seconds;
  return line + "  " + ReadableBytes(rate) + "/s  " + ReadableSeconds((total - done) / rate) +
         " left";
}

}  // namespace slyver
