// Times one way through a file, best of several:
//
//   measure WAY FILE [TIMES]
//
// Ways: the yardsticks "lines" (fgets_unlocked, nothing done with the lines) and "newlines" (fread
// and memchr), the library's readers "flat", "unfiltered", "tree" and "grammar", and "flat-run",
// the whole flat run with its map and its file beside the dump. Prints seconds of processor time.
#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kesncd/kesncd.h"

namespace {

using namespace orsa::kesncd;

void Lines(std::FILE* file) {
  static char line[4096];
  while (fgets_unlocked(line, sizeof line, file) != nullptr) {
  }
}

void Newlines(std::FILE* file) {
  static std::vector<char> block(256 * 1024);
  std::size_t lines = 0;
  while (const std::size_t got = std::fread(block.data(), 1, block.size(), file)) {
    const char* at = block.data();
    const char* const end = at + got;
    while ((at = static_cast<const char*>(
                std::memchr(at, '\n', static_cast<std::size_t>(end - at)))) != nullptr) {
      ++lines;
      ++at;
    }
  }
  if (lines == 0) std::fprintf(stderr, "measure: no lines\n");
}

/// Keeps the tree, so that the next reading deletes it before its time starts.
std::unique_ptr<KesNCD> kept;

void ReadTree(std::FILE* file) {
  kept->ParseVcdFileHier(file, {});
}

const char* dumpPath = nullptr;

void RunFlat() {
  kept->SetTopModule("top");
  std::string message;
  if (!kept->SetVCDFile(dumpPath, {}, message)) std::fprintf(stderr, "%s\n", message.c_str());
}

struct Way {
  std::string_view name;
  std::function<void(std::FILE*)> run;
};

const Way kWays[] = {
    {"lines", Lines},
    {"newlines", Newlines},
    {"flat",
     [](std::FILE* file) {
       KesNCD analyser;
       analyser.SetTopModule("top");
       topMod.Clear();
       analyser.ParseVcdFile2(file, {});
     }},
    {"unfiltered",
     [](std::FILE* file) {
       KesNCD analyser;
       analyser.SetTopModule("top");
       topMod.Clear();
       analyser.ParseVcdFile(file);
     }},
    {"flat-run", [](std::FILE*) { RunFlat(); }},
    {"tree", ReadTree},
    {"peak", ReadTree},
    {"grammar",
     [](std::FILE* file) {
       KesNCD analyser;
       analyser.SetTopModule("top");
       topMod.Clear();
       ParseVcdFile(file);
     }},
};

/// The processor time of this process: what else the machine does matters less to it than to the
/// clock on the wall, and a file in memory is read without waiting.
double CpuSeconds() {
  timespec now{};
  (void)clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double BestSeconds(const Way& way, const char* path, int times) {
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < times; ++i) {
    std::FILE* file = std::fopen(path, "r");
    if (file == nullptr) std::exit(2);
    kept = std::make_unique<KesNCD>();
    const double start = CpuSeconds();
    way.run(file);
    best = std::min(best, CpuSeconds() - start);
    (void)std::fclose(file);
  }
  return best;
}

}  // namespace

int main(int argc, char** argv) {
  for (const Way& way : kWays) {
    if (argc < 3 || way.name != argv[1]) continue;
    dumpPath = argv[2];
    const double seconds = BestSeconds(way, argv[2], argc > 3 ? std::atoi(argv[3]) : 3);
    if (way.name == "peak") {
      rusage usage{};
      getrusage(RUSAGE_SELF, &usage);
      std::printf("%ld\n", usage.ru_maxrss);
    } else {
      std::printf("%.4f\n", seconds);
    }
    return 0;
  }
  std::fprintf(stderr,
               "measure: lines|newlines|flat|flat-run|unfiltered|tree|grammar FILE [TIMES]\n");
  return 2;
}
