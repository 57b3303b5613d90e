// Loads, runs and unloads the library a thousand times, by way of a plugin, in a process that
// defines no host. Arguments: the library, the plugin, a folder to write to.
#include <dlfcn.h>
#include <malloc.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

double RunOnce(const char* library, const char* plugin, const std::string& dump) {
  void* const loaded = dlopen(plugin, RTLD_LAZY | RTLD_LOCAL);
  void* const run = loaded == nullptr ? nullptr : dlsym(loaded, "RunOnce");
  if (run == nullptr) return -6.0;
  const double frequency = reinterpret_cast<double (*)(const char*)>(run)(dump.c_str());
  if (dlclose(loaded) != 0 || dlopen(library, RTLD_LAZY | RTLD_NOLOAD) != nullptr) return -7.0;
  return frequency;
}

/// Bytes that are allocated, and those of the process's pages.
long Held() {
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return static_cast<long>(mallinfo2().uordblks) + 4096 * pages;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string dump = std::string(argv[3]) + "/host_life.vcd";
  std::ofstream(dump) << "$timescale\n1ns\n$end\n$scope module t $end\n$var wire 1 ! clk $end\n"
                         "$upscope $end\n$enddefinitions $end\n#0\n1!\n0!\n1!\n#10\n";
  long held = 0;
  double frequency = 100.0;
  for (int i = 0; i < 1000 && frequency == 100.0; ++i) {
    frequency = RunOnce(argv[1], argv[2], dump);
    if (i == 20) held = Held();
  }
  std::printf("%g MHz, %ld bytes more\n", frequency, Held() - held);
  return frequency == 100.0 && Held() - held <= 8 * 4096 ? 0 : 1;
}
