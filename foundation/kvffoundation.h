/// \file
/// Start-up and shut-down of the foundation as a whole: the log, the memory
/// baseline, the identifier table and the timer slots.
#ifndef PEVRANO_FOUNDATION_KVFFOUNDATION_H
#define PEVRANO_FOUNDATION_KVFFOUNDATION_H

/// Opens the log (a name containing ".html" selects HTML mode), takes the memory
/// baseline, creates the identifier table and frees every timer slot. A null
/// name starts the tables without a log. False if a log is already open or
/// cannot be created.
bool kvfInit(const char* logFileName);
/// Releases the identifier table, writes the memory summary and closes the log.
bool kvfShutdown();

#endif
