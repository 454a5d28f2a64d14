#include "scoping/nsp.h"

#include "bridge/tracescope.h"

int NSP::m_doUseVerboseMode = 0;

void NSP::SetVerbose(int flag) {
  SKIFF_TRACE("NSP::SetVerbose");
  m_doUseVerboseMode = flag;
}
