// Acknowledge and manage states of objects.
#include <cstdio>

#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxw.h"
#include "state/idfetch.h"

using skiff::state::FetchIds;
using skiff::state::IdFetch;
using skiff::state::PlatformErrorText;

void QxwEventDispatcher::SetAcknowledgeState(int numObjs, int doAcknowledge) {
  SKIFF_TRACE("QxwEventDispatcher::SetAcknowledgeState");
  const IdFetch fetch{m_getAckObjectList,
                      /*passesCount=*/true,
                      "In QxwEventDispatcher::SetAcknowledgeState: numObjs=%d\n",
                      "QxwEventDispatcher::SetAcknowledgeState failed, numObjs=%d, objSize=%d\n",
                      "QxwEventDispatcher::SetAcknowledgeState, objectList %d is %d\n",
                      "QxwEventDispatcher::SetAcknowledgeState, objectsArray %d is %d\n"};
  std::optional<std::vector<QXwObjectId>> objectIds =
      FetchIds({skiff::jni::AttachedEnv(), Peer(), m_doUseVerboseMode != 0}, fetch, numObjs);
  if (!objectIds) return;
  QXwObjectIdList objectList = skiff::state::ObjectIdList(*objectIds);
  if (QXwSetObjectAckState(m_pMap, &objectList, doAcknowledge) != 0) {
    std::fprintf(stderr, "QXwSetObjectAckState failed: %s\n", PlatformErrorText());
  }
}

void QxwEventDispatcher::SetManageState(int numObjs, int doManage) {
  SKIFF_TRACE("QxwEventDispatcher::SetManageState");
  const IdFetch fetch{m_getManageObjectList,
                      /*passesCount=*/true,
                      "In QxwEventDispatcher::SetManageState: numObjs=%d\n",
                      "QxwEventDispatcher::SetManageState failed, numObjs=%d, objSize=%d\n",
                      "QxwEventDispatcher::SetManageState, objectList %d is %d\n",
                      "QxwEventDispatcher::SetManageState, objectsArray %d is %d\n"};
  std::optional<std::vector<QXwObjectId>> objectIds =
      FetchIds({skiff::jni::AttachedEnv(), Peer(), m_doUseVerboseMode != 0}, fetch, numObjs);
  if (!objectIds) return;
  QXwObjectIdList objectList = skiff::state::ObjectIdList(*objectIds);
  if (doManage == 1) {
    if (_QXwManageObjects(m_pMap, &objectList) != 0) {
      std::fprintf(stderr, "_QXwManageObjects failed: %s\n", PlatformErrorText());
    }
  } else if (_QXwUnmanageObjects(m_pMap, &objectList) != 0) {
    std::fprintf(stderr, "_QXwUnmanageObjects failed: %s\n", PlatformErrorText());
  }
}
