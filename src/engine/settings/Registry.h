#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace slyver {

/// The roots of the registry, by their handles.
enum class RegRoot : std::uint32_t {
  ClassesRoot = 0x80000000,
  LocalMachine = 0x80000002,
  DynData = 0x80000006
};

/// The key that holds the program's one setting, "RAM".
inline constexpr std::string_view slyverKey = R"(Software\Orm Valis\Slyver)";

/// The string value `valueName` of the key `keyPath` (its folders separated by "\"). Empty when the
/// key or the value is missing, is not a string or cannot be read; of a value with a zero character
/// the part before it.
///
/// Where the system has no registry, the three routines keep an ini file in the user's
/// configuration folder: one section a key, named root\path, one line a value.
std::string GetRegString(RegRoot root, std::string_view keyPath, std::string_view valueName);

/// Stores `text` as a string value and makes the key if need be. A failure goes unnoticed.
void SaveRegString(RegRoot root, std::string_view keyPath, std::string_view valueName,
                   std::string_view text);

/// Deletes a value. Returns 0, or the status of the step that failed, which no caller looks at.
std::int32_t DeleteRegValue(RegRoot root, std::string_view keyPath, std::string_view valueName);

/// Deletes the value "filepath" of the key "Software\Orm Valis\FC", which outside components leave
/// and which goes at most exits.
void DeleteFilePathValue();

}  // namespace slyver
