// The dispatcher's session for the fuzz targets (see dispatcher_session.h).
#include "tests/fuzz/dispatcher_session.h"

#include <cstdlib>
#include <string>

#include "dispatcher/fieldinfocache.h"
#include "dispatcher/main.h"
#include "emulator/qxwemu.h"
#include "scoping/nsp.h"
#include "tables/scopingcache.h"
#include "tests/fuzz/fake_java.h"

namespace fuzzsession {

void Open() {
  static const bool open = [] {
    // Ids of the map's objects and symbols, and ids of none.
    jobject dispatcher =
        fakejava::Install({0, 2, 4, 10, 11, 12, 20, 21, 25, 100, 300, 400, 500, 1200, -1, 999},
                          {"Site A", "Annex", "nowhere"});
    QxwEventDispatcher::Open(skiff::jni::AttachedEnv(), dispatcher, "search", true, true, true,
                             true);
    setenv("QXW_MAP", kMap, 1);
    if (QXwInit() != 0) return false;
    QxwEventDispatcher::SetMap(QXwGetMapInfo());
    OpenFieldInfoCache();
    QxwEventDispatcher::CacheFieldIds();
    QxwEventDispatcher::m_thisQxwSessionEnablesLocationTracking = 1;
    NSP::CacheNSPFieldIds();
    ScopingCache::OpenScopeCache();
    return QxwEventDispatcher::AddQXwCallbacks();
  }();
  if (!open) std::abort();
}

void Reload() {
  for (const char* usual : {"list-order creation", "cascade off", "lists usual whole"}) {
    qxwemu::Control(usual);
  }
  qxwemu::Control("open-map " + std::string(kMap));
  DeliverEvents();
}

void DeliverEvents() {
  while (qxwemu::PendingEvents() > 0 && QXwProcessEvent() >= 0) {
    if (fakejava::LiveLocals() != 0) std::abort();
  }
}

}  // namespace fuzzsession
