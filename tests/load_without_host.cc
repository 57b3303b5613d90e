// Loads and unloads the library named on the command line in a process that defines no host.
#include <dlfcn.h>

#include <cstdio>

int main(int argc, char** argv) {
  void* const library = dlopen(argc > 1 ? argv[1] : "", RTLD_LAZY);
  if (library == nullptr) std::puts(dlerror());
  return library != nullptr && dlclose(library) == 0 ? 0 : 1;
}
