// The request lock goes to its waiters in the order they came, and the
// thread that unlocks cannot take it back before them.
#include "channel/fifolock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

namespace {

using skiff::channel::FifoLock;

// Starts threads 1 to `count` one after another while the caller holds the
// lock, each queued before the next starts; each records its number once it
// has the lock. Returns them to join.
std::vector<std::thread> QueueWaiters(FifoLock& lock, int count, std::vector<int>& order,
                                      std::mutex& orderLock) {
  std::vector<std::thread> waiters;
  for (int i = 1; i <= count; ++i) {
    waiters.emplace_back([&lock, &order, &orderLock, i] {
      std::lock_guard<FifoLock> held(lock);
      std::lock_guard<std::mutex> guard(orderLock);
      order.push_back(i);
    });
    while (lock.waiting() < static_cast<size_t>(i)) std::this_thread::yield();
  }
  return waiters;
}

TEST(FifoLockTest, WaitersTakeTheLockInTheOrderTheyCame) {
  FifoLock lock;
  std::vector<int> order;
  std::mutex orderLock;
  lock.lock();
  std::vector<std::thread> waiters = QueueWaiters(lock, 5, order, orderLock);
  // The holder unlocks and asks again at once: it comes after every waiter.
  lock.unlock();
  lock.lock();
  {
    std::lock_guard<std::mutex> guard(orderLock);
    order.push_back(0);
  }
  lock.unlock();
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4, 5, 0}));
  EXPECT_EQ(lock.waiting(), 0u);
}

}  // namespace
