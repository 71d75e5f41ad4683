/// \file
/// Process-wide table of object identifiers 1 to 65535; 0 means "no identifier".
#ifndef PEVRANO_FOUNDATION_KVFID_H
#define PEVRANO_FOUNDATION_KVFID_H

/// The lowest free identifier, or 0 when none is left or the table is missing.
unsigned int kvfNewId();
/// Gives an identifier back; false for 0, out-of-range or already free ids.
bool kvfReleaseId(unsigned int id);

/// Allocates the zeroed table as a counted block (kvfInit); false if out of memory.
bool kvfCreateIdTable();
/// Releases the table with kvfFree (kvfShutdown); nothing happens without one.
void kvfDestroyIdTable();

#endif
