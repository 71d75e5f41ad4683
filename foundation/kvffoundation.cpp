#include "foundation/kvffoundation.h"

#include "foundation/kvfid.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvftimer.h"

bool kvfInit(const char* logFileName)
{
    if (logFileName && !kvfOpenLog(logFileName))
        return false;
    kvfResetPeakMemory();
    kvfCreateIdTable();
    kvfResetTimers();
    kvfLogStartBanner();
    return true;
}

bool kvfShutdown()
{
    // The table goes first, so that the summary counts its block as released.
    kvfDestroyIdTable();
    kvfCloseLog();
    return true;
}
