#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace slyver {

/// The roots of the registry; the values are their handles.
enum class RegRoot : std::uint32_t {
  ClassesRoot = 0x80000000,
  LocalMachine = 0x80000002,
  DynData = 0x80000006
};

/// The key of the program's only setting, "RAM".
inline constexpr std::string_view slyverKey = R"(Software\Orm Valis\Slyver)";

/// Returns the string value `valueName` of the key `keyPath`, up to a zero character. Levels of
/// `keyPath` are separated by "\". Empty if the value is missing, is not a string or cannot be
/// read.
///
/// On POSIX the three routines use an ini file in the user's configuration folder: one section a
/// key, named root\path, one line a value.
std::string GetRegString(RegRoot root, std::string_view keyPath, std::string_view valueName);

/// Stores `text` as a string value and creates the key if missing. Ignores errors.
void SaveRegString(RegRoot root, std::string_view keyPath, std::string_view valueName,
                   std::string_view text);

/// Deletes a value. Returns 0, or the status of the step that failed.
std::int32_t DeleteRegValue(RegRoot root, std::string_view keyPath, std::string_view valueName);

/// Deletes the value "filepath" of the key "Software\Orm Valis\FC", a leftover of outside
/// components. Most exits call it.
void DeleteFilePathValue();

}  // namespace slyver
