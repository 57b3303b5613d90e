// The first bytes by which formats are known, and what turns each into a dump.
#include "free_format/findings/dump_format.h"

namespace orsa::kesncd {

namespace {

using namespace std::string_view_literals;

/// Bytes that begin every file of a format.
struct Magic {
  std::string_view bytes;
  ForeignFormat format;
};

// The first row that fits counts.
constexpr Magic kMagics[] = {
    {"\x1F\x8B"sv, {"gzip", "unpack it with gunzip"}},
    {"\x28\xB5\x2F\xFD"sv, {"zstd", "unpack it with unzstd"}},
    {"\xFD\x37zXZ"sv, {"xz", "unpack it with unxz"}},
    {"BZh"sv, {"bzip2", "unpack it with bunzip2"}},
    {"PK\x03\x04"sv, {"zip", "unpack it with unzip"}},
    // A header block: type 0 and a length of 329.
    {"\0\0\0\0\0\0\0\x01\x49"sv, {"FST", "convert it with fst2vcd (GTKWave)"}},
    {"\xFE\0\0\0\0"sv, {"FST", "convert it with fst2vcd (GTKWave)"}},  // packed once more
    {"SQLite format 3\0"sv, {"an SQLite database", "give the dump that it was made from"}},
    {"\x13\x80"sv, {"LXT2", "convert it with lxt2vcd (GTKWave), or simulate without -lxt2"}},
    {"\x01\x38"sv, {"LXT", "simulate again without -lxt"}},
    {"VZ"sv, {"VZT", "convert it with vzt2vcd (GTKWave)"}},
    {"GHDLwave\n"sv, {"GHW", "simulate with --vcd=FILE in place of --wave=FILE"}},
    {"version https://git-lfs"sv, {"a git-lfs pointer", "fetch the file with git lfs pull"}},
    {"\xFF\xFE"sv, {"UTF-16", "convert it with iconv -f UTF-16 -t UTF-8"}},
    {"\xFE\xFF"sv, {"UTF-16", "convert it with iconv -f UTF-16 -t UTF-8"}},
    // A dump in UTF-16 without a mark begins with the "$" of a keyword.
    {"$\0"sv, {"UTF-16", "convert it with iconv -f UTF-16LE -t UTF-8"}},
    {"\0$"sv, {"UTF-16", "convert it with iconv -f UTF-16BE -t UTF-8"}},
};

// A "$" among the first bytes tells a text with keywords from a binary file.
constexpr std::size_t kLooked = 4096;

// Both are texts that lie beside a dump and are easily taken for it.
constexpr ForeignFormat kSaveFile{"a GTKWave save file",
                                  "give the dump that its [dumpfile] line names"};
constexpr ForeignFormat kCompiled{"a compiled simulation (Icarus Verilog)",
                                  "run it with vvp: $dumpfile in the test bench names the dump"};

/// Texts, which have no fixed first bytes. Blanks before the first line do not matter.
ForeignFormat TextFormatOf(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  if (start == std::string_view::npos) return {};
  text.remove_prefix(start);
  const std::string_view line = text.substr(0, text.find('\n'));
  if (line.starts_with("[*]") || line.starts_with("[dumpfile]")) return kSaveFile;
  if (line.starts_with(":ivl_version")) return kCompiled;
  // A compiled simulation may be a script that starts itself.
  if (line.starts_with("#!") && line.find("vvp") != std::string_view::npos) return kCompiled;
  return {};
}

}  // namespace

/// The magic bytes first: they leave no doubt.
ForeignFormat ForeignFormatOf(std::string_view firstBytes) {
  for (const Magic& magic : kMagics) {
    if (firstBytes.substr(0, magic.bytes.size()) == magic.bytes) return magic.format;
  }
  // A text has no NULs; a dump that a crash left with a hole does, but not without a keyword first.
  const std::string_view head = firstBytes.substr(0, kLooked);
  if (head.find('\0') != std::string_view::npos && head.find('$') > head.find('\0')) {
    return {"a binary file", "have the simulator write VCD"};
  }
  return TextFormatOf(head);
}

std::string ForeignText(const ForeignFormat& format) {
  return "is " + std::string(format.name) + ", no VCD file: " + std::string(format.remedy);
}

}  // namespace orsa::kesncd
