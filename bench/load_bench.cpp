// Loading and unloading the library at run time, against a library that has nothing in it.

#include "bench/report.h"

#include <dlfcn.h>

namespace {

/// Microseconds for one time.
double load(const char* path) {
    constexpr int rounds = 200;
    return 1e6 / rounds * bench::seconds([path] {
               for (int i = 0; i < rounds; ++i) {
                   void* library = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
                   if (!library || ::dlclose(library) != 0) {
                       std::fprintf(stderr, "%s\n", ::dlerror());
                       std::exit(1);
                   }
               }
           });
}

} // namespace

int main() {
    bench::report("g.load",
                  bench::compare([] { return load(TARNEL_LIBRARY); },
                                 [] { return load(TARNEL_EMPTY_LIBRARY); }),
                  "us");
}
