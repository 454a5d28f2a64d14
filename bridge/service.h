// Look-up of a TCP service's port in the system's services database.
#ifndef SKIFF_BRIDGE_SERVICE_H_
#define SKIFF_BRIDGE_SERVICE_H_

namespace skiff {

// The port of the named TCP service in host byte order. 0 for a null name
// (no look-up is made), and 0 with "getServiceByName: getservbyname()
// failed (error:%d)\n" on standard error when the database does not list
// the service.
int GetServiceByName(const char* tcpServiceName);

}  // namespace skiff

#endif  // SKIFF_BRIDGE_SERVICE_H_
