/// \file
/// Small file helpers.
#ifndef PEVRANO_FOUNDATION_KVFFILE_H
#define PEVRANO_FOUNDATION_KVFFILE_H

#include <cstdio>

/// Size in bytes, -1 for a null path or a file that cannot be opened.
int kvfFileSize(const char* path);
/// False for a null path or a file that cannot be opened for reading.
bool kvfFileExists(const char* path);
/// Opens a file for reading ("rb"); null for a null path, a file that cannot
/// be opened or a directory (which some systems let fopen open).
FILE* kvfOpenReadable(const char* path);

#endif
