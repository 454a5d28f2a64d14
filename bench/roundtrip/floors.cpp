// The round trip's native floors: the same exchange of a request and an
// answer between two native threads with nothing of Java, the platform or
// the library in between, by three means: blocking reads on a loopback TCP
// connection (what the request channel uses), a condition variable (no
// socket), and both threads spinning on an atomic (no sleeping at all).
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "com_quenda_skiff_trellis_bench_RoundTripBench.h"

namespace {

// What request 2 for (1, 2, 3) and its answer are on the connection.
constexpr char kRequest[] = "2 1 2 3";
constexpr char kAnswer[] = "1";

using Clock = std::chrono::steady_clock;

// Reads up to a NUL; false at the end of the stream or on an error.
bool ReadMessage(int fd) {
  char buffer[500];
  for (;;) {
    ssize_t n = read(fd, buffer, sizeof(buffer));
    if (n <= 0) return false;
    if (std::memchr(buffer, '\0', static_cast<size_t>(n)) != nullptr) return true;
  }
}

// A loopback TCP connection answered by a thread of its own; each sample is
// one request written and its answer read.
void TcpFloor(std::vector<jlong>& samples) {
  int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address));
  listen(listener, 1);
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  std::thread server([listener] {
    int peer = accept(listener, nullptr, nullptr);
    int on = 1;
    setsockopt(peer, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    while (ReadMessage(peer)) write(peer, kAnswer, sizeof(kAnswer));
    close(peer);
  });
  int client = socket(AF_INET, SOCK_STREAM, 0);
  int on = 1;
  setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  connect(client, reinterpret_cast<sockaddr*>(&address), sizeof(address));
  for (jlong& sample : samples) {
    auto start = Clock::now();
    write(client, kRequest, sizeof(kRequest));
    ReadMessage(client);
    sample = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
  }
  close(client);
  server.join();
  close(listener);
}

// Two threads handing a turn back and forth under a condition variable.
void CondvarFloor(std::vector<jlong>& samples) {
  std::mutex mutex;
  std::condition_variable changed;
  int turn = 0;  // 0: the requester's, 1: the server's, 2: stop
  std::thread server([&] {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
      changed.wait(lock, [&] { return turn != 0; });
      if (turn == 2) return;
      turn = 0;
      changed.notify_all();
    }
  });
  for (jlong& sample : samples) {
    auto start = Clock::now();
    std::unique_lock<std::mutex> lock(mutex);
    turn = 1;
    changed.notify_all();
    changed.wait(lock, [&] { return turn == 0; });
    sample = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
  }
  {
    std::lock_guard<std::mutex> lock(mutex);
    turn = 2;
  }
  changed.notify_all();
  server.join();
}

// Two threads spinning on one atomic turn.
void SpinFloor(std::vector<jlong>& samples) {
  std::atomic<int> turn{0};
  std::thread server([&] {
    for (;;) {
      int t;
      while ((t = turn.load(std::memory_order_acquire)) == 0) {
      }
      if (t == 2) return;
      turn.store(0, std::memory_order_release);
    }
  });
  for (jlong& sample : samples) {
    auto start = Clock::now();
    turn.store(1, std::memory_order_release);
    while (turn.load(std::memory_order_acquire) != 0) {
    }
    sample = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
  }
  turn.store(2, std::memory_order_release);
  server.join();
}

}  // namespace

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_bench_RoundTripBench_floor(JNIEnv* pEnv,
                                                                                jclass, jint kind,
                                                                                jlongArray out) {
  std::vector<jlong> samples(static_cast<size_t>(pEnv->GetArrayLength(out)));
  switch (kind) {
    case 0:
      TcpFloor(samples);
      break;
    case 1:
      CondvarFloor(samples);
      break;
    default:
      SpinFloor(samples);
      break;
  }
  pEnv->SetLongArrayRegion(out, 0, static_cast<jsize>(samples.size()), samples.data());
}
