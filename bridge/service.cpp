#include "bridge/service.h"

#include <netdb.h>
#include <netinet/in.h>

#include <cerrno>
#include <cstdio>

#include "bridge/tracescope.h"

namespace skiff {

int GetServiceByName(const char* tcpServiceName) {
  SKIFF_TRACE("getServiceByName");
  if (tcpServiceName == nullptr) return 0;
  // The reentrant form: any Java thread may ask at any time.
  servent entry{};
  servent* found = nullptr;
  char buffer[1024];
  errno = 0;
  int error = getservbyname_r(tcpServiceName, "tcp", &entry, buffer, sizeof(buffer), &found);
  if (found == nullptr) {
    std::fprintf(stderr, "getServiceByName: getservbyname() failed (error:%d)\n",
                 error != 0 ? error : errno);
    return 0;
  }
  return ntohs(static_cast<uint16_t>(found->s_port));
}

}  // namespace skiff
