/// \file
/// Foundation log: one log file per process, plain text or HTML, with an
/// optional echo of every message to standard output.
#ifndef PEVRANO_FOUNDATION_KVFLOG_H
#define PEVRANO_FOUNDATION_KVFLOG_H

/// Name the foundation gives itself in the start and end banners.
#define KVF_VERSION_STRING "Kolvane foundation 0.4"

/// Opens the log file; a name containing ".html" selects HTML mode. False if a
/// log is already open or the file cannot be created.
bool kvfOpenLog(const char* logFileName);
/// Writes the start banner with the current date and time.
void kvfLogStartBanner();
/// Writes the memory summary and the end banner, then closes the log.
void kvfCloseLog();
/// printf-style message; false when no log is open.
bool kvfLog(const char* format, ...) __attribute__((format(printf, 1, 2)));
/// Writes an error record (time, source, message); always returns false.
bool kvfError(const char* from, const char* detail, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
/// Switches the echo of log messages to standard output (on by default).
void kvfSetConsoleEcho(bool on);

#endif
