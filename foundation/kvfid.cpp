#include "foundation/kvfid.h"

#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"

#include <cstring>

namespace {

// Four times the entries needed; only 1 to 65535 are used.
const unsigned int tableBytes = 262144;
const unsigned int idLimit = 65536;

unsigned char* idTable = nullptr;
// Every id below this one is in use: the search for the lowest free id starts
// here, so that giving out ids one after another takes constant time.
unsigned int lowestFree = 1;

}  // namespace

bool kvfCreateIdTable()
{
    kvfDestroyIdTable();
    idTable = static_cast<unsigned char*>(kvfMalloc(tableBytes));
    if (!idTable)
        return false;
    memset(idTable, 0, tableBytes);
    lowestFree = 1;
    return true;
}

void kvfDestroyIdTable()
{
    if (!idTable)
        return;
    kvfFree(idTable);
    idTable = nullptr;
}

unsigned int kvfNewId()
{
    if (!idTable) {
        kvfLog("kvfNewId: ID table not initialized\n");
        return 0;
    }
    for (unsigned int id = lowestFree; id < idLimit; ++id) {
        if (idTable[id])
            continue;
        idTable[id] = 1;
        lowestFree = id + 1;
        return id;
    }
    lowestFree = idLimit;
    kvfLog("kvfNewId: all ID are used\n");
    return 0;
}

bool kvfReleaseId(unsigned int id)
{
    if (id == 0 || id >= idLimit) {
        kvfLog("releaseId: invalid params (%d)\n", static_cast<int>(id));
        return false;
    }
    if (!idTable) {
        kvfLog("releaseId: ID table not initialized\n");
        return false;
    }
    if (!idTable[id]) {
        // No line feed: the next log text continues on this line.
        kvfLog("releaseId: ID already released (%d)", static_cast<int>(id));
        return false;
    }
    idTable[id] = 0;
    if (id < lowestFree)
        lowestFree = id;
    return true;
}
