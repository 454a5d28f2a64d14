// A platform resolver that puts the local host on 127.0.1.1, as many hosts'
// name tables do, where nothing of the library listens. Preloaded into the
// JVM of the test that needs it.
#include <netdb.h>
#include <netinet/in.h>

extern "C" hostent* gethostbyname_new(const char*) {
  static in_addr address{htonl(0x7F000101)};
  static char* addresses[] = {reinterpret_cast<char*>(&address), nullptr};
  static char name[] = "localhost";
  static char* aliases[] = {nullptr};
  static hostent host{name, aliases, AF_INET, sizeof(in_addr), addresses};
  return &host;
}
