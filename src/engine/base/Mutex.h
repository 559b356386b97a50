#pragma once

#include <mutex>

// Clang checks at compile time that guarded members are used under their mutex (./test --lint).
// Other compilers do not know these attributes.
#ifdef __clang__
#define SLYVER_THREADS(attribute) __attribute__((attribute))
#else
#define SLYVER_THREADS(attribute)
#endif
#define GUARDED_BY(mutex) SLYVER_THREADS(guarded_by(mutex))
#define EXCLUDES(...) SLYVER_THREADS(locks_excluded(__VA_ARGS__))

namespace slyver {

/// A std::mutex for Clang's analysis.
class SLYVER_THREADS(capability("mutex")) Mutex {
 public:
  void lock() SLYVER_THREADS(acquire_capability()) { mutex_.lock(); }
  void unlock() SLYVER_THREADS(release_capability()) { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

/// Locks a mutex for as long as it lives.
class SLYVER_THREADS(scoped_lockable) Lock {
 public:
  explicit Lock(Mutex& mutex) SLYVER_THREADS(acquire_capability(mutex)) : mutex_(mutex) {
    mutex_.lock();
  }
  ~Lock() SLYVER_THREADS(release_capability()) { mutex_.unlock(); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace slyver
