// qxw-monitor driven over the control socket, as a person with qxw-ctl would:
// replies, the events the monitor prints, sync, dump, counters, fail, and
// end-session ending the monitor.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include <nlohmann/json.hpp>

#include "tests/support/platform_session.h"

namespace {

using nlohmann::json;

class Monitor {
 public:
  explicit Monitor(const std::string& mapPath) {
    socketPath_ = "/tmp/skiff-monitor-" + std::to_string(getpid()) + ".sock";
    int out[2];
    EXPECT_EQ(pipe(out), 0);
    pid_ = fork();
    if (pid_ == 0) {
      dup2(out[1], 1);
      close(out[0]);
      setenv("QXW_MAP", mapPath.c_str(), 1);
      setenv("QXW_CONTROL", socketPath_.c_str(), 1);
      execl(SKIFF_BINARY_DIR "/bin/qxw-monitor", "qxw-monitor", nullptr);
      _exit(127);
    }
    close(out[1]);
    out_ = out[0];
    for (int i = 0; i < 500 && control_ < 0; ++i) {
      control_ = Connect();
      if (control_ < 0) usleep(10 * 1000);
    }
    EXPECT_GE(control_, 0) << "the monitor's control socket never appeared";
  }
  ~Monitor() {
    if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (control_ >= 0) close(control_);
    close(out_);
  }

  // Sends one command and returns its reply.
  json Command(const std::string& command) {
    std::string line = command + "\n";
    EXPECT_EQ(send(control_, line.data(), line.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(line.size()));
    std::string reply = ReadLine(control_, &replies_, 5000);
    return reply.empty() ? json() : json::parse(reply);
  }

  // The next event line the monitor printed, waiting at most `ms`.
  std::string Event(int ms = 5000) { return ReadLine(out_, &events_, ms); }

  const std::string& socketPath() const { return socketPath_; }

  // The exit status once the monitor has ended, or -1.
  int WaitExit() {
    for (int i = 0; i < 500; ++i) {
      int status = 0;
      if (waitpid(pid_, &status, WNOHANG) == pid_) {
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      }
      usleep(10 * 1000);
    }
    return -1;
  }

 private:
  int Connect() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socketPath_.c_str(), sizeof(address.sun_path) - 1);
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) return fd;
    close(fd);
    return -1;
  }

  static std::string ReadLine(int fd, std::string* buffer, int ms) {
    for (;;) {
      size_t nl = buffer->find('\n');
      if (nl != std::string::npos) {
        std::string line = buffer->substr(0, nl);
        buffer->erase(0, nl + 1);
        return line;
      }
      pollfd p{fd, POLLIN, 0};
      if (poll(&p, 1, ms) <= 0) return "";
      char chunk[4096];
      ssize_t n = read(fd, chunk, sizeof(chunk));
      if (n <= 0) return "";
      buffer->append(chunk, static_cast<size_t>(n));
    }
  }

  pid_t pid_ = -1;
  int out_ = -1;
  int control_ = -1;
  std::string socketPath_;
  std::string replies_, events_;
};

class MonitorTest : public ::testing::Test {
 protected:
  std::string mapPath_ = skifftest::WriteTempFile(skifftest::TestMap("platform.json"));
};

TEST_F(MonitorTest, SyncAnswersOnlyAfterTheEventWasDelivered) {
  Monitor monitor(mapPath_);
  EXPECT_EQ(monitor.Command("ping"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("hide 104 103"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("sync"), json({{"ok", true}}));
  // Already printed: no waiting allowed.
  json event = json::parse(monitor.Event(0));
  EXPECT_EQ(event["event"], 23);
  ASSERT_EQ(event["symbols"].size(), 2u);
  EXPECT_EQ(event["symbols"][0]["id"], 104);
  EXPECT_EQ(event["symbols"][1]["id"], 103);
  EXPECT_EQ(event["symbols"][1]["hidden"], true);
  EXPECT_EQ(event["symbols"][1]["placement"], 2);
  EXPECT_EQ(event["symbols"][1]["pred"], 104);
}

TEST_F(MonitorTest, EveryCommandAnswersAndChangesWhatItNames) {
  Monitor monitor(mapPath_);
  EXPECT_EQ(monitor.Command("move 104 2 106"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("status 5 106"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("normalize 106 1"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("autolayout 3 0"), json({{"ok", true}}));
  json created = monitor.Command(
      R"(create-object {"fields": {"Selection Name": "new", "isInterface": true}})");
  EXPECT_EQ(created["id"], 71);
  EXPECT_EQ(monitor.Command("delete-objects 71"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("delete-symbols 110"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("sync"), json({{"ok", true}}));
  const char* expected[] = {
      R"({"event":20,"symbol":{"id":104,"submap":3,"object":40,"label":"host1","type":"Computer:Workstation","variety":1,"plane":2,"hidden":true,"status":0,"statusSource":0,"apps":["IP Map"],"placement":2,"pred":106}})",
      R"({"event":25,"symbols":[{"id":106,"submap":3,"object":31,"label":"rtr2","type":"Connector:Router","variety":1,"plane":2,"hidden":false,"status":5,"statusSource":0,"apps":["Other App","IP Map"],"placement":7,"x":0,"y":0}]})",
      R"({"event":39,"symbol":{"id":106,"submap":3,"object":31,"label":"rtr2","type":"Connector:Router","variety":1,"plane":2,"hidden":false,"status":5,"statusSource":0,"apps":["Other App","IP Map"],"placement":7,"x":0,"y":0},"isNormalized":true})",
      R"({"event":40,"submap":{"id":3,"name":"10.1.0","app":"IP Map","policy":0,"parentObject":20,"layoutOn":false}})",
      R"({"event":18,"objects":[{"id":71,"childSubmap":0,"fields":{"Selection Name":"new","isInterface":true}}]})",
      R"({"event":15,"objects":[{"id":71,"childSubmap":0,"fields":{"Selection Name":"new","isInterface":true}}]})",
      R"({"event":14,"symbols":[{"id":110,"submap":4,"object":42,"label":"le1","type":"Card:Ethernet","variety":1,"plane":2,"hidden":false,"status":0,"statusSource":0,"apps":["IP Map"],"placement":0,"x":0,"y":0}]})",
  };
  for (const char* line : expected) EXPECT_EQ(monitor.Event(0), line);

  json map = monitor.Command("dump")["map"];
  EXPECT_EQ(map["symbols"].size(), 10u);
  EXPECT_EQ(map["symbols"][4]["id"], 104);
  EXPECT_EQ(map["symbols"][4]["pred"], 106);
  EXPECT_EQ(map["submaps"][2]["layoutOn"], false);
  EXPECT_EQ(map["objects"].size(), 12u);
}

TEST_F(MonitorTest, CountersAndFailuresOverTheSocket) {
  Monitor monitor(mapPath_);
  EXPECT_EQ(monitor.Command("reset-counters"), json({{"ok", true}}));
  monitor.Command("ping");
  monitor.Command("ping");
  // Each command is applied by one QXwProcessEvent of the monitor's loop.
  EXPECT_GE(monitor.Command("counters")["counters"]["QXwProcessEvent"].get<int>(), 2);
  EXPECT_EQ(monitor.Command("fail QXwInit 3"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("fail QXwInit x")["error"], "the code must be an integer, not \"x\"");
  EXPECT_EQ(monitor.Command("fail QXwInit off"), json({{"ok", true}}));
}

// Runs qxw-ctl with `arguments` and `input` on its standard input; returns
// its output and sets its exit status.
std::string RunCtl(const std::string& arguments, const std::string& input, int* status) {
  std::string inputPath = skifftest::WriteTempFile(input, ".txt");
  std::string command = SKIFF_BINARY_DIR "/bin/qxw-ctl " + arguments + " < " + inputPath;
  FILE* pipe = popen(command.c_str(), "r");
  std::string out;
  char buffer[4096];
  size_t n;
  while ((n = fread(buffer, 1, sizeof(buffer), pipe)) > 0) out.append(buffer, n);
  *status = WEXITSTATUS(pclose(pipe));
  std::remove(inputPath.c_str());
  return out;
}

TEST_F(MonitorTest, TheControlClientTakesCommandsAsArgumentsOrLines) {
  Monitor monitor(mapPath_);
  const std::string socket = "-s " + monitor.socketPath();
  int status = -1;
  EXPECT_EQ(RunCtl(socket + " ping \"unhide 104\" sync", "", &status),
            "{\"ok\":true}\n{\"ok\":true}\n{\"ok\":true}\n");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(monitor.Event(0).rfind("{\"event\":24,\"symbols\":[{\"id\":104,", 0), 0u);
  EXPECT_EQ(
      RunCtl(socket, "ping\n\nhide 999\nping\n", &status),
      "{\"ok\":true}\n{\"ok\":false,\"error\":\"symbol 999 does not exist\"}\n{\"ok\":true}\n");
  EXPECT_EQ(status, 1);
  RunCtl("-s /nonexistent.sock ping", "", &status);
  EXPECT_EQ(status, 2);
}

TEST_F(MonitorTest, EndSessionEndsTheMonitor) {
  Monitor monitor(mapPath_);
  EXPECT_EQ(monitor.Command("close-map"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("open-map"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Command("end-session"), json({{"ok", true}}));
  EXPECT_EQ(monitor.Event(),
            R"({"event":4,"map":{"name":"test campus","permissions":2,"rootSubmap":1}})");
  EXPECT_EQ(monitor.Event(),
            R"({"event":3,"map":{"name":"campus","permissions":2,"rootSubmap":1}})");
  EXPECT_EQ(monitor.Event(), R"({"event":1,"normalEnd":true})");
  EXPECT_EQ(monitor.WaitExit(), 0);
}

}  // namespace
