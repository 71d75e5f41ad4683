#include "engineconsole.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "foundation/kvflog.h"

namespace {

// Standard output as the tool was given it, while /dev/null stands in for it.
int savedOutput = -1;

// An executable's pre-initialisation functions run before the initialisers
// of the shared libraries it loads, the engine's among them.
void divertOutput(int, char**, char**)
{
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0)
        return;
    savedOutput = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    if (savedOutput >= 0 && dup2(nowhere, STDOUT_FILENO) < 0) {
        close(savedOutput);
        savedOutput = -1;
    }
    close(nowhere);
}

__attribute__((section(".preinit_array"), used)) void (*const divertOutputEntry)(int, char**,
                                                                                 char**) = divertOutput;

}  // namespace

void EngineConsole::silence()
{
    kvfSetConsoleEcho(false);
    if (savedOutput < 0)
        return;
    std::fflush(stdout);
    dup2(savedOutput, STDOUT_FILENO);
    close(savedOutput);
    savedOutput = -1;
}
