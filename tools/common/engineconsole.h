// Keeps the engine's log off a tool's standard output. The engine opens its
// log, and echoes its start-up banner on standard output, when the library
// is loaded, before main runs: a tool's own output (its --help included)
// would come wrapped in log lines.
#ifndef PEVRANO_TOOLS_COMMON_ENGINECONSOLE_H
#define PEVRANO_TOOLS_COMMON_ENGINECONSOLE_H

class EngineConsole {
public:
    // Called first in main: switches the log's echo off and gives standard
    // output back to the tool; what the engine echoed while the library was
    // loaded went to /dev/null. The log file itself keeps every line.
    static void silence();
};

#endif
