#include <cerrno>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "engine/base/FileError.h"
#include "engine/disk/Files.h"
#include "engine/disk/WorkFolders.h"
#include "engine/settings/INIReadWri.h"
#include "engine/settings/Registry.h"

namespace slyver {

namespace {

/// Returns the user's folder for the program's settings, which may not exist yet.
std::filesystem::path ConfigurationFolder() {
  const char* const value = std::getenv("XDG_CONFIG_HOME");
  const std::filesystem::path configuration = value == nullptr ? "" : value;
  return (configuration.is_absolute() ? configuration : HomeFolder() / ".config") / "slyver";
}

std::filesystem::path RegistryFile() {
  return ConfigurationFolder() / "registry.ini";
}

std::string SectionOf(RegRoot root, std::string_view keyPath) {
  const char* name = "HKEY_LOCAL_MACHINE";
  if (root == RegRoot::ClassesRoot) name = "HKEY_CLASSES_ROOT";
  if (root == RegRoot::DynData) name = "HKEY_DYN_DATA";
  return std::string(name) + "\\" + std::string(keyPath);
}

}  // namespace

std::string GetRegString(RegRoot root, std::string_view keyPath, std::string_view valueName) {
  try {
    return IniText::OfFile(RegistryFile()).Value(SectionOf(root, keyPath), valueName);
  } catch (const std::exception&) {
    return {};
  }
}

void SaveRegString(RegRoot root, std::string_view keyPath, std::string_view valueName,
                   std::string_view text) {
  try {
    std::filesystem::create_directories(ConfigurationFolder());
    IniText registry = IniText::OfFile(RegistryFile());
    // The quotation marks keep blanks at the ends of the value.
    registry.Set(SectionOf(root, keyPath), valueName,
                 "\"" + std::string(text.substr(0, text.find('\0'))) + "\"");
    WriteSmallFile(RegistryFile(), registry.Text());
  } catch (const std::exception&) {
    return;  // As with the registry's own calls, whose status is ignored.
  }
}

std::int32_t DeleteRegValue(RegRoot root, std::string_view keyPath, std::string_view valueName) {
  try {
    IniText registry = IniText::OfFile(RegistryFile());
    if (!registry.Remove(SectionOf(root, keyPath), valueName)) return ENOENT;
    WriteSmallFile(RegistryFile(), registry.Text());
    return 0;
  } catch (const std::exception&) {
    return EIO;
  }
}

}  // namespace slyver
