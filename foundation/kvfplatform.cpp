#include "foundation/kvfplatform.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/sysinfo.h>
#include <unistd.h>

long long kvfPerformanceCounter()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

long long kvfPerformanceFrequency() { return 1000000000LL; }

kvfLocalTime kvfGetLocalTime()
{
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    tm local;
    localtime_r(&now.tv_sec, &local);
    kvfLocalTime result;
    result.year = static_cast<unsigned int>(local.tm_year + 1900);
    result.month = static_cast<unsigned int>(local.tm_mon + 1);
    result.day = static_cast<unsigned int>(local.tm_mday);
    result.hour = static_cast<unsigned int>(local.tm_hour);
    result.minute = static_cast<unsigned int>(local.tm_min);
    result.second = static_cast<unsigned int>(local.tm_sec);
    result.millisecond = static_cast<unsigned int>(now.tv_nsec / 1000000);
    return result;
}

namespace {

// Value in kB of a "Name:   123 kB" line of /proc/meminfo, 0 if missing.
unsigned long long meminfoField(const char* text, const char* name)
{
    const char* found = strstr(text, name);
    return found ? strtoull(found + strlen(name), nullptr, 10) : 0;
}

// /proc/meminfo stays open: kvfMalloc asks on every allocation, and re-reading
// the open file from offset 0 gives fresh figures without reopening it.
bool readMeminfo(char* text, size_t capacity)
{
    static int fd = -1;
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (fd < 0)
            fd = open("/proc/meminfo", O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            return false;
        ssize_t length = pread(fd, text, capacity - 1, 0);
        if (length > 0) {
            text[length] = '\0';
            return true;
        }
        close(fd);
        fd = -1;
    }
    return false;
}

}  // namespace

unsigned long long kvfPhysicalMemoryInUse()
{
    char text[4096];
    if (readMeminfo(text, sizeof text)) {
        unsigned long long total = meminfoField(text, "MemTotal:");
        unsigned long long available = meminfoField(text, "MemAvailable:");
        if (total >= available && total > 0)
            return (total - available) * 1024ULL;
    }
    struct sysinfo info;
    if (sysinfo(&info) != 0)
        return 0;
    return (static_cast<unsigned long long>(info.totalram) - info.freeram) * info.mem_unit;
}
