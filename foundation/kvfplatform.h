// The operating-system services the foundation needs: a monotonic counter,
// the local time and the physical memory in use.
#ifndef PEVRANO_FOUNDATION_KVFPLATFORM_H
#define PEVRANO_FOUNDATION_KVFPLATFORM_H

// Local date and time, split as the log banners print it.
struct kvfLocalTime {
    unsigned int year, month, day, hour, minute, second, millisecond;
};

// Monotonic counter value and its ticks per second.
long long kvfPerformanceCounter();
long long kvfPerformanceFrequency();
kvfLocalTime kvfGetLocalTime();
// Physical memory in use by the whole system, in bytes (total minus available).
unsigned long long kvfPhysicalMemoryInUse();

#endif
