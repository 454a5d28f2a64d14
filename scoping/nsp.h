// NSP: the "Location ID" field and location scoping.
#ifndef SKIFF_SCOPING_NSP_H_
#define SKIFF_SCOPING_NSP_H_

class NSP {
 public:
  // Write NSP's trace lines on standard error (QxwInterface.open sets it).
  static int m_doUseVerboseMode;

  static void SetVerbose(int flag);
};

#endif  // SKIFF_SCOPING_NSP_H_
