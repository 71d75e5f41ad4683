#include "foundation/kvfmemory.h"

#include "foundation/kvfplatform.h"

#include <cstdlib>

namespace {
kvfMemoryStats counters;

void raisePeakPhysical() {
    unsigned long long inUse = kvfPhysicalMemoryInUse();
    if (inUse > counters.peakPhysical) counters.peakPhysical = inUse;
}
}  // namespace

void* kvfMalloc(unsigned int size) {
    counters.ratio += 1;
    counters.allocations += 1;
    counters.totalBytes += size;
    void* block = malloc(size);
    raisePeakPhysical();
    return block;
}

void kvfFree(void* block) {
    counters.ratio -= 1;
    counters.releases += 1;
    free(block);
}

kvfMemoryStats kvfGetMemoryStats() { return counters; }

void kvfResetPeakMemory() { counters.peakPhysical = kvfPhysicalMemoryInUse(); }
