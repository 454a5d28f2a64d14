// FifoLock: a mutual exclusion lock taken in the order it was asked for.
// The request connection carries one request at a time for every Java
// thread; under std::mutex the thread that has just finished takes it again
// before the woken waiters run, so a few threads get most of the requests
// and the others wait for milliseconds. Here the one who unlocks hands the
// lock to the longest waiter, who alone is woken.
#ifndef SKIFF_CHANNEL_FIFOLOCK_H_
#define SKIFF_CHANNEL_FIFOLOCK_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

namespace skiff::channel {

class FifoLock {
 public:
  FifoLock() = default;
  FifoLock(const FifoLock&) = delete;
  FifoLock& operator=(const FifoLock&) = delete;

  // Takes the lock at once when it is free and nobody waits; otherwise
  // waits behind every thread that asked before.
  void lock();
  // Gives the lock to the longest waiter, or frees it when none waits.
  // Only its holder unlocks it.
  void unlock();
  // The threads waiting now (for tests).
  size_t waiting();

 private:
  struct Waiter {
    std::condition_variable turn;
    bool granted = false;
  };
  std::mutex mutex_;
  bool held_ = false;            // guarded by mutex_
  std::deque<Waiter*> waiters_;  // guarded by mutex_, the oldest first
};

}  // namespace skiff::channel

#endif  // SKIFF_CHANNEL_FIFOLOCK_H_
