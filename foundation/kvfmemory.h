/// \file
/// Counted memory: every block taken with kvfMalloc and given back with kvfFree
/// is counted, so that the log's final summary shows leaks as a non-zero ratio.
#ifndef PEVRANO_FOUNDATION_KVFMEMORY_H
#define PEVRANO_FOUNDATION_KVFMEMORY_H

/// Allocation with the system allocator (not zero-filled); counted even when
/// the allocator fails.
void* kvfMalloc(unsigned int size);
/// Counted release of a block from kvfMalloc.
void kvfFree(void* block);

/// The counters as they stand, printed by kvfShutdown.
struct kvfMemoryStats {
    int ratio = 0;  ///< allocations minus releases
    unsigned int allocations = 0;  ///< kvfMalloc calls
    unsigned int releases = 0;  ///< kvfFree calls
    unsigned int totalBytes = 0;  ///< sum of all sizes ever requested
    unsigned int peakPhysical = 0;  ///< highest physical memory in use seen, bytes
};
/// The counters as they stand now.
kvfMemoryStats kvfGetMemoryStats();
/// Sets the peak of physical memory in use to the current use (kvfInit).
void kvfResetPeakMemory();

#endif
