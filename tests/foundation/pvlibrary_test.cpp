// The engine library opens its log when it is loaded into a process and
// closes it, with the memory summary, when it is unloaded.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/logpattern.h"

using namespace pvtest;

namespace {

// Runs a program in the current directory with its standard output in
// "stdout.txt"; returns its exit status, -1 if it did not exit normally.
int runProgram(const char* program, const char* argument = nullptr)
{
    pid_t child = fork();
    if (child == 0) {
        int out = open("stdout.txt", O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(out, 1);
        close(out);
        execl(program, program, argument, static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A whole text log from the library's load to its unload around the lines
// the process logged itself.
std::string wholeLibraryLog(const std::string& logged, const std::string& ratioLine,
                            const std::string& totalLine)
{
    return textStartBanner() +
           literal("   Log file for Pevrano 3D Graphics Engine for Axim v1.6.6a (debug)\n") +
           literal(logged) + literal("   Log completed\n") + textSummary(ratioLine, totalLine);
}

}  // namespace

TEST(Library, LinkedProcessLogsFromLoadToExit)
{
    ScratchDir dir;
    ASSERT_EQ(runProgram(PEVRANO_LOG_PROCESS), 0);
    std::string log = readFile("pevrano_log.txt");
    // The identifier table plus blocks of 1,000 and 24 bytes: 263,168 bytes.
    EXPECT_TRUE(matchesWhole(
        log, wholeLibraryLog("   helper process running\n      id 1\n", "Final memory ratio: 0 (3/3)",
                             "Total allocated memory (kvfMalloc): 0.25 mb (263168 bytes)")))
        << log;
    // The console echo carries the same text.
    EXPECT_EQ(readFile("stdout.txt"), log);
}

TEST(Library, LoadAndUnloadAtRunTime)
{
    ScratchDir dir;
    ASSERT_EQ(runProgram(PEVRANO_DLOPEN_PROCESS, PEVRANO_LIBRARY), 0) << readFile("stdout.txt");
    // The copy taken right after dlclose is already complete.
    std::string log = readFile("after_unload.txt");
    EXPECT_TRUE(
        matchesWhole(log, wholeLibraryLog("   loaded at run time\n", "Final memory ratio: 0 (1/1)",
                                          "Total allocated memory (kvfMalloc): 0.25 mb (262144 bytes)")))
        << log;
    EXPECT_EQ(readFile("pevrano_log.txt"), log);
    EXPECT_EQ(readFile("stdout.txt"), log);
}
