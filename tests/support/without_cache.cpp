#include <cstdlib>

// No test, nor a program that it starts, keeps files for the user who runs it, unless it asks for
// them and has a cache folder of its own.
[[maybe_unused]] static const int withoutCache = ::setenv("QUORVEX_CACHE", "no", 1);
