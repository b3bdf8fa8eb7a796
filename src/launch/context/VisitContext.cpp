#include "launch/context/VisitContext.h"

VisitContextRecord VisitContext;
ClientSetupRecord ClientSetup;
SaupRecords SaupTable;
ConnectionPointer Connection;
