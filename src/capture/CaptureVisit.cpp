#include "capture/CaptureVisit.h"

#include "launch/context/VisitContext.h"

CaptureVisit CaptureVisit::Current()
{
    return {VisitContext.Chart, VisitContext.Yuhyung,    VisitContext.Jinchal,  VisitContext.Ymd,
            VisitContext.Etc,   VisitContext.CaptureDir, VisitContext.ImageExt, VisitContext.CaExtra};
}
