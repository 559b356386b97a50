#include <windows.h>

#include "desktop/app/Instance.h"

namespace slyver {

struct Instance::State {
  HANDLE mutex = nullptr;
  bool anotherRuns = false;
};

Instance::Instance() : state_(std::make_unique<State>()) {
  // Every instance keeps a handle; the system deletes the mutex with the last one.
  state_->mutex = CreateMutexW(nullptr, FALSE, L"Local\\Slyver instances");
  state_->anotherRuns = state_->mutex != nullptr && GetLastError() == ERROR_ALREADY_EXISTS;
}

Instance::~Instance() {
  if (state_->mutex != nullptr) (void)CloseHandle(state_->mutex);
}

bool Instance::AnotherRuns() const {
  return state_->anotherRuns;
}

}  // namespace slyver
