#include "foundation/kvftimer.h"

#include "foundation/kvflog.h"
#include "foundation/kvfplatform.h"

namespace {

const int timerCount = 8;

struct TimerSlot {
    float fps = 0.0f;
    float factor = 0.0f;
    float rate = 0.0f;  // 0.0 marks a free slot
    long long frequency = 0;
    long long now = 0;
    long long last = 0;
};

TimerSlot timers[timerCount];

// The slot behind a handle; null, with the caller's "wrong params" line, for
// an out-of-range handle or a free slot.
TimerSlot* usedSlot(int timer, const char* caller)
{
    if (timer < 0 || timer >= timerCount || timers[timer].rate == 0.0f) {
        kvfLog("%s: wrong params\n", caller);
        return nullptr;
    }
    return &timers[timer];
}

}  // namespace

void kvfResetTimers()
{
    for (TimerSlot& slot : timers)
        slot.rate = 0.0f;
}

int kvfNewTimer(float rate)
{
    for (int index = 0; index < timerCount; ++index) {
        TimerSlot& slot = timers[index];
        if (slot.rate != 0.0f)
            continue;
        slot.rate = rate;
        slot.last = kvfPerformanceCounter();
        slot.frequency = kvfPerformanceFrequency();
        return index;
    }
    kvfLog("kvfNewTimer: no more timers\n");
    return -1;
}

bool kvfFreeTimer(int timer)
{
    TimerSlot* slot = usedSlot(timer, "kvfFreeTimer");
    if (!slot)
        return false;
    slot->rate = 0.0f;
    return true;
}

bool kvfAdjournTimer(int timer)
{
    TimerSlot* slot = usedSlot(timer, "kvfAdjournTimer");
    if (!slot)
        return false;
    slot->now = kvfPerformanceCounter();
    float ticks = static_cast<float>(slot->now - slot->last);
    float frequency = static_cast<float>(slot->frequency);
    slot->factor = ticks / (frequency / slot->rate);
    if (!(slot->factor > 0.0f))
        slot->factor = 1.0f;
    slot->fps = slot->rate / slot->factor;
    slot->last = slot->now;
    return true;
}

float kvfGetTimerFactor(int timer)
{
    const TimerSlot* slot = usedSlot(timer, "kvfGetTimerFactor");
    if (!slot)
        return -1.0f;
    return slot->factor;
}

float kvfGetTimerFps(int timer)
{
    const TimerSlot* slot = usedSlot(timer, "kvfGetTimerFps");
    if (!slot)
        return -1.0f;
    return slot->fps;
}
