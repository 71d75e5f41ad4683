// The engine library opens its log when it is loaded into a process and
// closes it, with the memory summary, when it is unloaded.
#include <cstdlib>
#include <sys/wait.h>

#include "foundation/logpattern.h"

using namespace pvtest;

TEST(Library, LogsFromLoadToUnload)
{
    // Linked in, the library logs from the process start to its exit. Loaded
    // at run time, the log copied right after dlclose is already complete.
    // Either way the console echo carries the same text. The identifier table
    // takes 262,144 bytes; the linked process adds blocks of 1,000 and 24.
    const struct {
        std::string command, log, logged, ratio, total;
    } cases[] = {{"'" PEVRANO_LOG_PROCESS "'", "pevrano_log.txt", "   helper process running\n      id 1\n",
                  "0 (3/3)", "0.25 mb (263168 bytes)"},
                 {"'" PEVRANO_DLOPEN_PROCESS "' '" PEVRANO_LIBRARY "'", "after_unload.txt",
                  "   loaded at run time\n", "0 (1/1)", "0.25 mb (262144 bytes)"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        ScratchDir dir;
        const int status = std::system((c.command + " > stdout.txt").c_str());
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << readFile("stdout.txt");
        const std::string log = readFile(c.log);
        EXPECT_TRUE(matchesWhole(
            log, literal("[Kolvane foundation 0.4 started at ") + dateTimePattern +
                     literal("]\n" + dashes +
                             "\n\n   Log file for Pevrano 3D Graphics Engine for Axim v1.6.6a (debug)\n" +
                             c.logged + "   Log completed\n\n" + dashes + "\nFinal memory ratio: " + c.ratio +
                             "\n") +
                     peakPattern +
                     literal("\nTotal allocated memory (kvfMalloc): " + c.total +
                             "\n[Kolvane foundation 0.4 terminated at ") +
                     dateTimePattern + literal("]\n")))
            << log;
        EXPECT_EQ(readFile("pevrano_log.txt"), log);
        EXPECT_EQ(readFile("stdout.txt"), log);
    }
}
