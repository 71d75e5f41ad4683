#include "foundation/kvfmemory.h"

#include "foundation/kvfplatform.h"

#include <climits>
#include <cstdlib>

namespace {
kvfMemoryStats counters;

// The peak is a 32-bit figure: larger amounts of memory in use read as the
// largest one it holds.
unsigned int physicalMemoryInUse()
{
    unsigned long long inUse = kvfPhysicalMemoryInUse();
    return inUse > UINT_MAX ? UINT_MAX : static_cast<unsigned int>(inUse);
}

void raisePeakPhysical()
{
    unsigned int inUse = physicalMemoryInUse();
    if (inUse > counters.peakPhysical)
        counters.peakPhysical = inUse;
}
}  // namespace

void* kvfMalloc(unsigned int size)
{
    counters.ratio += 1;
    counters.allocations += 1;
    counters.totalBytes += size;
    void* block = malloc(size);
    raisePeakPhysical();
    return block;
}

void kvfFree(void* block)
{
    counters.ratio -= 1;
    counters.releases += 1;
    free(block);
}

kvfMemoryStats kvfGetMemoryStats() { return counters; }

void kvfResetPeakMemory() { counters.peakPhysical = physicalMemoryInUse(); }
