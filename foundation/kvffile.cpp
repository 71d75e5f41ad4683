#include "foundation/kvffile.h"

#include <climits>
#include <cstdio>
#include <sys/stat.h>

FILE* kvfOpenReadable(const char* path)
{
    if (!path)
        return nullptr;
    FILE* file = fopen(path, "rb");
    if (!file)
        return nullptr;
    struct stat status;
    if (fstat(fileno(file), &status) != 0 || S_ISDIR(status.st_mode)) {
        fclose(file);
        return nullptr;
    }
    return file;
}

int kvfFileSize(const char* path)
{
    FILE* file = kvfOpenReadable(path);
    if (!file)
        return -1;
    long size = -1;
    if (fseek(file, 0, SEEK_END) == 0)
        size = ftell(file);
    fclose(file);
    // Sizes the int result cannot hold count as unreadable.
    return size > INT_MAX ? -1 : static_cast<int>(size);
}

bool kvfFileExists(const char* path)
{
    FILE* file = kvfOpenReadable(path);
    if (!file)
        return false;
    fclose(file);
    return true;
}
