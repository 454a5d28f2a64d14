#include "channel/fifolock.h"

namespace skiff::channel {

void FifoLock::lock() {
  std::unique_lock<std::mutex> guard(mutex_);
  if (!held_ && waiters_.empty()) {
    held_ = true;
    return;
  }
  Waiter me;
  waiters_.push_back(&me);
  // The lock stays held from its last holder to this thread: nobody can
  // take it in between.
  me.turn.wait(guard, [&me] { return me.granted; });
}

void FifoLock::unlock() {
  std::lock_guard<std::mutex> guard(mutex_);
  if (waiters_.empty()) {
    held_ = false;
    return;
  }
  Waiter* next = waiters_.front();
  waiters_.pop_front();
  next->granted = true;
  // Under the mutex: the waiter cannot leave (and end) before this returns.
  next->turn.notify_one();
}

size_t FifoLock::waiting() {
  std::lock_guard<std::mutex> guard(mutex_);
  return waiters_.size();
}

}  // namespace skiff::channel
