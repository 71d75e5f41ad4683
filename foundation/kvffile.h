// Small file helpers.
#ifndef KVF_FILE_H
#define KVF_FILE_H

// Size in bytes, -1 for a null path or a file that cannot be opened.
int kvfFileSize(const char* path);
// False for a null path or a file that cannot be opened for reading.
bool kvfFileExists(const char* path);

#endif
