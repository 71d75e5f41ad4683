// Runs with the engine library linked in: logs a few lines, takes and gives
// back counted memory and an identifier, and leaves the rest to the
// library's load and unload hooks.
#include <pevrano.h>

int main()
{
    kvfLog("   helper process running\n");
    void* large = kvfMalloc(1000);
    void* small = kvfMalloc(24);
    unsigned int id = kvfNewId();
    kvfLog("      id %u\n", id);
    kvfReleaseId(id);
    kvfFree(small);
    kvfFree(large);
    return 0;
}
