// Writes a dump for the benchmarks to standard output:
//
//   generate_dump KIND BYTES [SCALE]
//
//   short    many short changes: 20,000 scalars drawn evenly, a stamp each 40 changes
//   vectors  32- and 64-bit vectors
//   tree     200,000 scalars in 5,000 scopes
//   names    1,000,000 scalars of different names in 5,000 scopes, for looking names up
//   buses    4,000 vectors of 64 and 32 bits, for the names of their bits
//
// BYTES is about how long the dump gets; SCALE multiplies the numbers of signals and scopes. The
// same arguments give the same dump.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Shape {
  std::string_view kind;
  int scopes;
  int signals;
  int width;  // of every other signal, half as wide as the rest; 1: all scalars
};

constexpr Shape kShapes[] = {
    {"short", 1, 20000, 1},      {"vectors", 1, 2000, 64}, {"tree", 5000, 200000, 1},
    {"names", 5000, 1000000, 1}, {"buses", 1, 4000, 64},
};

constexpr int kChangesPerStamp = 40;

/// The code of signal `number`, as simulators number them.
std::string Code(int number) {
  std::string code;
  for (++number; number > 0; number /= 94) code += static_cast<char>('!' + --number % 94);
  return code;
}

class Dump {
 public:
  Dump(const Shape& shape, int scale)
      : scopes_(shape.scopes > 1 ? shape.scopes * scale : 1),
        width_(shape.width),
        sameNames_(shape.kind == "tree") {
    for (int i = 0; i < shape.signals * scale; ++i) codes_.push_back(Code(i));
  }

  void WriteHeader() const {
    std::printf("$timescale\n\t1ps\n$end\n$scope module top $end\n");
    const std::size_t perScope = codes_.size() / static_cast<std::size_t>(scopes_);
    for (std::size_t i = 0; i < codes_.size(); ++i) {
      if (scopes_ > 1 && i % perScope == 0) {
        if (i > 0) std::printf("$upscope $end\n");
        std::printf("$scope module u%zu $end\n", i / perScope);
      }
      WriteVariable(i, sameNames_ ? i % perScope : i);
    }
    if (scopes_ > 1) std::printf("$upscope $end\n");
    std::printf("$upscope $end\n$enddefinitions $end\n");
  }

  void WriteBody(std::int64_t bytes) {
    std::int64_t written = 0;
    for (std::int64_t time = 0; written < bytes; time += 5000) {
      written += std::printf("#%lld\n", static_cast<long long>(time));
      for (int i = 0; i < kChangesPerStamp; ++i) written += WriteChange(random_() % codes_.size());
    }
  }

 private:
  int WidthOf(std::size_t signal) const {
    return width_ > 1 && signal % 2 != 0 ? width_ / 2 : width_;
  }

  void WriteVariable(std::size_t signal, std::size_t name) const {
    const char* code = codes_[signal].c_str();
    if (WidthOf(signal) > 1) {
      std::printf("$var reg %d %s n%zu [%d:0] $end\n", WidthOf(signal), code, name,
                  WidthOf(signal) - 1);
    } else {
      std::printf("$var wire 1 %s n%zu [0] $end\n", code, name);
    }
  }

  int WriteChange(std::size_t signal) {
    const int width = WidthOf(signal);
    const std::uint64_t value = random_();
    std::string line;
    if (width > 1) line += 'b';
    for (int bit = width - 1; bit >= 0; --bit) line += (value >> bit & 1) != 0 ? '1' : '0';
    if (width > 1) line += ' ';
    line += codes_[signal] + '\n';
    std::fputs(line.c_str(), stdout);
    return static_cast<int>(line.size());
  }

  int scopes_;
  int width_;
  bool sameNames_;  // in all scopes
  std::vector<std::string> codes_;
  std::mt19937_64 random_{20261121};
};

}  // namespace

int main(int argc, char** argv) {
  if (argc >= 3) {
    for (const Shape& shape : kShapes) {
      if (shape.kind != argv[1]) continue;
      Dump dump(shape, argc > 3 ? std::atoi(argv[3]) : 1);
      dump.WriteHeader();
      dump.WriteBody(std::atoll(argv[2]));
      return std::fflush(stdout) == 0 ? 0 : 1;
    }
  }
  std::fprintf(stderr, "generate_dump: short|vectors|tree|names|buses BYTES [SCALE]\n");
  return 2;
}
