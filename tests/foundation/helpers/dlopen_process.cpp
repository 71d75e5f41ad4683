// Loads the engine library at run time (it is not linked in), logs through
// it, unloads it, then copies the log: the copy shows what the unload wrote
// before the process ends. Exit status: 0 done, 2 load failed, 3 symbol
// missing, 4 still loaded after dlclose, 5 copy failed.
#include <dlfcn.h>

#include <cstdio>
#include <filesystem>

int main(int argc, char** argv)
{
    if (argc < 2)
        return 1;
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    // kvfLog(const char*, ...) under its C++ linkage name.
    using LogFunction = bool (*)(const char*, ...);
    LogFunction log = reinterpret_cast<LogFunction>(dlsym(library, "_Z6kvfLogPKcz"));
    if (!log)
        return 3;
    log("   loaded at run time\n");
    dlclose(library);
    if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD))
        return 4;
    std::error_code failed;
    std::filesystem::copy_file("pevrano_log.txt", "after_unload.txt", failed);
    return failed ? 5 : 0;
}
