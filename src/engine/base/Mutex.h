#pragma once

#include <mutex>

// Clang proves at compile time that what a mutex guards is touched under it alone (./test --lint);
// other compilers do not know these words.
#ifdef __clang__
#define SLYVER_THREADS(attribute) __attribute__((attribute))
#else
#define SLYVER_THREADS(attribute)
#endif
#define GUARDED_BY(mutex) SLYVER_THREADS(guarded_by(mutex))
#define EXCLUDES(...) SLYVER_THREADS(locks_excluded(__VA_ARGS__))

namespace slyver {

/// A std::mutex that Clang's analysis knows.
class SLYVER_THREADS(capability("mutex")) Mutex {
 public:
  void lock() SLYVER_THREADS(acquire_capability()) { mutex_.lock(); }
  void unlock() SLYVER_THREADS(release_capability()) { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

/// Holds a mutex for as long as it lives.
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
