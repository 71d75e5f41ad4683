/// \file
/// Eight high-resolution timers measuring the time between two adjourn calls.
#ifndef PEVRANO_FOUNDATION_KVFTIMER_H
#define PEVRANO_FOUNDATION_KVFTIMER_H

/// Takes the lowest free slot; returns its index 0 to 7, or -1 when all are taken.
int kvfNewTimer(float rate);
/// Gives the slot back; false on a bad or free handle.
bool kvfFreeTimer(int timer);
/// Measures the time since the previous adjourn (or the creation).
bool kvfAdjournTimer(int timer);
/// Elapsed seconds times rate at the last adjourn; -1.0 on a bad handle.
float kvfGetTimerFactor(int timer);
/// Rate divided by factor at the last adjourn; -1.0 on a bad handle.
float kvfGetTimerFps(int timer);

/// Marks every slot free (kvfInit).
void kvfResetTimers();

#endif
