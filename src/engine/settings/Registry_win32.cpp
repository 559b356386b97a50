#include "engine/settings/Registry.h"

#include <windows.h>

namespace slyver {

namespace {

HKEY RootOf(RegRoot root) {
  // The system's own constants are sign-extended from 32 bits too.
  return reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(root)));
}

/// Reads the value in one root. Keeps the key open until the process ends, as it always has.
std::string ReadValue(HKEY root, const std::string& keyPath, const std::string& valueName) {
  HKEY key = nullptr;
  (void)RegOpenKeyA(root, keyPath.c_str(), &key);
  DWORD type = REG_NONE;
  DWORD size = 0;
  (void)RegQueryValueExA(key, valueName.c_str(), nullptr, &type, nullptr, &size);
  if (type != REG_SZ) return {};
  std::string buffer(size, ' ');
  if (RegQueryValueExA(key, valueName.c_str(), nullptr, &type,
                       reinterpret_cast<BYTE*>(buffer.data()), &size) != ERROR_SUCCESS)
    return {};
  return buffer.substr(0, buffer.find('\0'));
}

/// Stores the value; false on an error.
bool WriteValue(HKEY root, const std::string& keyPath, const std::string& valueName,
                std::string_view text) {
  HKEY key = nullptr;
  (void)RegCreateKeyA(root, keyPath.c_str(), &key);
  // The value has always been stored without a terminating zero.
  const LSTATUS status =
      RegSetValueExA(key, valueName.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                     static_cast<DWORD>(text.size()));
  (void)RegCloseKey(key);
  return status == ERROR_SUCCESS;
}

std::int32_t DeleteValue(HKEY root, const std::string& keyPath, const std::string& valueName) {
  HKEY key = nullptr;
  const LSTATUS opened = RegOpenKeyA(root, keyPath.c_str(), &key);
  const LSTATUS status = RegDeleteValueA(key, valueName.c_str());
  (void)RegCloseKey(key);
  return opened == ERROR_SUCCESS ? status : opened;
}

}  // namespace

// Users who may not write for the whole machine use the same keys of their own.

std::string GetRegString(RegRoot root, std::string_view keyPath, std::string_view valueName) {
  const std::string key(keyPath);
  const std::string name(valueName);
  std::string value = ReadValue(RootOf(root), key, name);
  if (value.empty() && root == RegRoot::LocalMachine)
    return ReadValue(HKEY_CURRENT_USER, key, name);
  return value;
}

void SaveRegString(RegRoot root, std::string_view keyPath, std::string_view valueName,
                   std::string_view text) {
  const std::string key(keyPath);
  const std::string name(valueName);
  const bool stored = WriteValue(RootOf(root), key, name, text);
  if (root != RegRoot::LocalMachine) return;
  if (!stored)
    (void)WriteValue(HKEY_CURRENT_USER, key, name, text);
  else  // The user's earlier value must not be read instead of an empty text.
    (void)DeleteValue(HKEY_CURRENT_USER, key, name);
}

std::int32_t DeleteRegValue(RegRoot root, std::string_view keyPath, std::string_view valueName) {
  const std::string key(keyPath);
  const std::string name(valueName);
  const std::int32_t status = DeleteValue(RootOf(root), key, name);
  if (root != RegRoot::LocalMachine) return status;
  const std::int32_t userStatus = DeleteValue(HKEY_CURRENT_USER, key, name);
  return status == ERROR_SUCCESS ? status : userStatus;
}

}  // namespace slyver
