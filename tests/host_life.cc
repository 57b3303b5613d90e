// Loads and unloads the library in a process that defines no host: first by itself, then a thousand
// times with runs between. Arguments: the library, and the plugin that uses it.
#include <dlfcn.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

/// Pages of the process.
long Pages() {
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages;
}

int Fail(const char* what) {
  std::printf("%s: %s\n", what, dlerror());
  return 1;
}

double RunLoaded(const char* plugin, const char* dump) {
  void* const loaded = dlopen(plugin, RTLD_LAZY | RTLD_LOCAL);
  if (loaded == nullptr) return -6.0;
  const auto run = reinterpret_cast<double (*)(const char*)>(dlsym(loaded, "RunOnce"));
  const double frequency = run == nullptr ? -7.0 : run(dump);
  return dlclose(loaded) == 0 ? frequency : -8.0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  void* const library = dlopen(argv[1], RTLD_LAZY);
  if (library == nullptr || dlclose(library) != 0) return Fail("load");
  if (dlopen(argv[1], RTLD_LAZY | RTLD_NOLOAD) != nullptr) return Fail("it stays loaded");

  const std::string dump = "host_life_" + std::to_string(getpid()) + ".vcd";
  std::ofstream(dump) << "$timescale\n1ns\n$end\n$scope module t $end\n$var wire 1 ! clk $end\n"
                         "$upscope $end\n$enddefinitions $end\n#0\n1!\n0!\n1!\n#10\n";
  long pages = 0;
  std::size_t held = 0;
  double frequency = 0.0;
  for (int i = 0; i < 1000; ++i) {
    frequency = RunLoaded(argv[2], dump.c_str());
    if (frequency != 100.0) break;
    if (i == 20) {
      pages = Pages();
      held = mallinfo2().uordblks;
    }
  }
  const long grown = Pages() - pages;
  const long kept = static_cast<long>(mallinfo2().uordblks - held);
  std::printf("frequency %g, %ld pages and %ld bytes more\n", frequency, grown, kept);
  std::remove(dump.c_str());
  std::remove((dump + ".txt").c_str());
  return frequency == 100.0 && grown <= 8 && kept <= 4096 ? 0 : 1;
}
