// Load and unload hooks of the engine library: the log opens as soon as the
// library is in the process and closes when it leaves, so it covers everything
// from before PEVRANO::init to after PEVRANO::free.
#include "core/pvversion.h"
#include "foundation/kvffoundation.h"
#include "foundation/kvflog.h"

namespace {

const char* const engineVersion = PEVRANO_VERSION_STRING;

// Runs before the library's other static initialisers, so they may log.
__attribute__((constructor(101))) void libraryLoaded()
{
    kvfInit("pevrano_log.txt");
    kvfLog("   Log file for %s\n", engineVersion);
}

// Runs after the library's other static finalisers.
__attribute__((destructor(101))) void libraryUnloaded()
{
    kvfLog("   Log completed\n");
    kvfShutdown();
}

}  // namespace
