// The control socket: no client can hold the event loop, neither by leaving
// its replies unread nor by sending a line without end.
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "emulator/qxwemu.h"
#include "platform/qxw.h"
#include "tests/support/platform_session.h"

namespace {

const std::string kOk = R"({"ok":true})";
const std::string kTooLong = R"({"ok":false,"error":"the command is longer than )" +
                             std::to_string(qxwemu::kMaxControlLine) + R"( bytes"})";

// A session with a control socket whose event loop runs on a thread of its
// own until the session ends.
class ControlSocketTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = "/tmp/skifftest-control-" + std::to_string(getpid()) + ".sock";
    setenv("QXW_CONTROL", path_.c_str(), 1);
    session_ = std::make_unique<skifftest::PlatformSession>(skifftest::TestMap("platform.json"));
    unsetenv("QXW_CONTROL");
    ASSERT_TRUE(session_->ok()) << session_->error();
    loop_ = std::thread([] {
      while (QXwProcessEvent() >= 0) {
      }
    });
  }

  void TearDown() override {
    if (loop_.joinable()) {
      qxwemu::Control("end-session");
      loop_.join();
    }
    for (int fd : clients_) close(fd);
  }

  int Connect() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path_.c_str(), sizeof(address.sun_path) - 1);
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    clients_.push_back(fd);
    return fd;
  }

  static void Send(int fd, const std::string& text) {
    for (size_t sent = 0; sent < text.size();) {
      ssize_t n = send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
      ASSERT_GT(n, 0);
      sent += static_cast<size_t>(n);
    }
  }

  // The next reply line, or "end" when the emulator closed the connection.
  static std::string Reply(int fd, std::string* buffer) {
    for (size_t nl; (nl = buffer->find('\n')) == std::string::npos;) {
      char chunk[65536];
      ssize_t n = recv(fd, chunk, sizeof(chunk), 0);
      if (n <= 0) return "end";
      buffer->append(chunk, static_cast<size_t>(n));
    }
    std::string line = buffer->substr(0, buffer->find('\n'));
    buffer->erase(0, line.size() + 1);
    return line;
  }

  std::string path_;
  std::unique_ptr<skifftest::PlatformSession> session_;
  std::thread loop_;
  std::vector<int> clients_;
};

TEST_F(ControlSocketTest, AClientThatNeverReadsIsDroppedAndOthersAreServed) {
  const size_t dumpSize = qxwemu::Control("dump").size() + 1;
  const size_t dumps = 2 * qxwemu::kMaxControlBacklog / dumpSize + 1;
  int idle = Connect();
  std::string commands;
  for (size_t i = 0; i < dumps; ++i) commands += "dump\n";
  Send(idle, commands);

  int other = Connect();
  Send(other, "ping\n");
  std::string buffer;
  EXPECT_EQ(Reply(other, &buffer), kOk);
  EXPECT_EQ(qxwemu::Control("ping"), kOk);

  // The idle client is dropped once its backlog passes the bound: waiting for
  // the hang-up reads nothing, so the backlog cannot shrink meanwhile.
  pollfd hangup{idle, 0, 0};
  ASSERT_EQ(poll(&hangup, 1, -1), 1);
  size_t replies = 0;
  buffer.clear();
  while (Reply(idle, &buffer) != "end") ++replies;
  EXPECT_LT(replies, dumps);
}

TEST_F(ControlSocketTest, ALineLongerThanTheBoundGetsOneRefusal) {
  struct Case {
    const char* what;
    size_t length;  // of a "ping" padded with blanks
    std::string reply;
  } cases[] = {
      {"at the bound", qxwemu::kMaxControlLine, kOk},
      {"one byte over", qxwemu::kMaxControlLine + 1, kTooLong},
      {"far over, in many pieces", 3 * qxwemu::kMaxControlLine, kTooLong},
  };
  int fd = Connect();
  std::string buffer;
  for (const Case& c : cases) {
    Send(fd, "ping" + std::string(c.length - 4, ' ') + "\nping\n");
    EXPECT_EQ(Reply(fd, &buffer), c.reply) << c.what;
    EXPECT_EQ(Reply(fd, &buffer), kOk) << c.what;
  }
}

TEST_F(ControlSocketTest, ALineIsRefusedAsSoonAsItPassesTheBound) {
  int fd = Connect();
  std::string buffer;
  Send(fd, "ping" + std::string(qxwemu::kMaxControlLine, ' '));
  EXPECT_EQ(Reply(fd, &buffer), kTooLong);
  Send(fd, "the rest of the line\nping\n");
  EXPECT_EQ(Reply(fd, &buffer), kOk);
}

}  // namespace
