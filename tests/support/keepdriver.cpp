// In sanitizer builds, keeps Mesa's driver loaded for the whole test process.
// Mesa unloads the driver at eglTerminate; the few bytes it never frees would
// then be reported by the leak checker against an unknown module, beyond the
// reach of the suppressions for the system's graphics libraries.
#ifdef PEVRANO_MESA_DRIVER
#include <dlfcn.h>

namespace {
struct KeepDriverLoaded {
    KeepDriverLoaded() { dlopen(PEVRANO_MESA_DRIVER, RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE); }
} keepDriverLoaded;
}  // namespace
#endif
