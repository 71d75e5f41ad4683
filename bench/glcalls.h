// GL calls counted at the entry points: the benchmark executable defines
// the GL functions the engine calls (it is linked with exported symbols, so
// the library's calls bind here, and so do the floors' own); each one counts
// the call and forwards it to the GL library.
#ifndef PEVRANO_BENCH_GLCALLS_H
#define PEVRANO_BENCH_GLCALLS_H

namespace pvbench {

struct GLCALLCOUNTS {
    long all = 0;  // every GL call
    long draws = 0;  // glDrawElements and glDrawArrays
};

GLCALLCOUNTS& glCalls();

}  // namespace pvbench

#endif
