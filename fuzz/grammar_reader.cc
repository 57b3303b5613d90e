// The grammar reader, with and without traces. Its fatal exit at a bad time scale is caught: the
// linker turns every call of exit into one of the function here, which throws while a parse is on.
#include <cstdlib>
#include <exception>

#include "fuzz/target.h"
#include "kesncd/kesncd.h"
#include "tests/support/input.h"
#include "tests/support/reader_state.h"
#include "tests/support/require.h"
#include "tests/support/streams.h"

namespace {

using namespace orsa::kesncd;

struct Exit {
  int status;
};
bool parsing = false;

}  // namespace

extern "C" {
[[noreturn]] void __real_exit(int status);
[[noreturn]] void __wrap_exit(int status) {
  if (parsing) throw Exit{status};
  __real_exit(status);
}
}

namespace {

int Parse(std::FILE* stream) {
  constexpr int kFatal = 4;
  int result = 0;
  parsing = true;
  try {
    result = ParseVcdFile(stream);
    support::Require(result == 0 || result == 2, "the result of a parse");
  } catch (const Exit& end) {
    support::Require(end.status == kFatal, "the status of a bad time scale");
    result = kFatal;
  }
  parsing = false;
  return result;
}

std::string ReadDump(std::FILE* stream, const support::Input& input, bool traces) {
  ResetReaderState();
  KesNCD analyser;
  analyser.SetTopModule(input.Option(0, "top"));
  debug = traces ? 1 : 0;
  const int result = Parse(stream);
  support::Require(yysptr - yysbuf <= 1, "at most one character is given back");
  support::Require(yyps - yys == yypv - yyv && yyps >= yys && yyps < yys + std::size(yy_yys),
                   "the stacks");
  support::Require(yylval.text[sizeof yylval.text - 1] == '\0', "the last word ends");
  return support::StateText() + " result " + std::to_string(result) + " line " +
         std::to_string(yylineno) + " errors " + std::to_string(yynerrs) + " stamp " +
         std::to_string(cur_time) + " inside " + std::to_string(isReadingTopMod);
}

}  // namespace

void CheckInput(std::string_view bytes) {
  const support::Input input(bytes);
  std::string whole;
  std::string dripped;
  {
    const support::Quiet quiet;
    whole = ReadDump(TextStream(input.text), input, false);
    dripped = ReadDump(support::DrippingStream(input.text), input, true);
  }
  support::Require(whole == dripped,
                   [&] { return "at once: " + whole + "\nin drips: " + dripped; });
}
