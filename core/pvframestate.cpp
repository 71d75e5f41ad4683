#include "core/pvframestate.h"

#include "foundation/kvftimer.h"

long PVFRAMESTATE::timeStamp = 65536;
int PVFRAMESTATE::timer = -1;
unsigned int PVFRAMESTATE::videoMemoryTotal = 0;
unsigned int PVFRAMESTATE::videoMemoryUsed = 0;
bool PVFRAMESTATE::shadowing = false;

float PVFRAMESTATE::getFPS() { return kvfGetTimerFps(timer); }
float PVFRAMESTATE::getFPSfactor() { return kvfGetTimerFactor(timer); }
