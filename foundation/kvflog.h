// Foundation log: one log file per process, plain text or HTML, with an
// optional echo of every message to standard output.
#ifndef KVF_LOG_H
#define KVF_LOG_H

// Name the foundation gives itself in the start and end banners.
#define KVF_VERSION_STRING "Kolvane foundation 0.4"

// Starts the foundation (memory baseline, identifier table, timers) and opens
// the log; a name containing ".html" selects HTML mode. A null name starts the
// tables without a log. False if a log is already open or cannot be created.
bool kvfInit(const char* logFileName);
// Releases the identifier table, writes the memory summary and closes the log.
bool kvfShutdown();
// printf-style message; false when no log is open.
bool kvfLog(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Writes an error record (time, source, message); always returns false.
bool kvfError(const char* from, const char* detail, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
// Switches the echo of log messages to standard output (on by default).
void kvfSetConsoleEcho(bool on);

#endif
