// The keywords of dumps, those of port dumps among them.
#ifndef KESNCD_VCD_DUMP_KEYWORDS_H_
#define KESNCD_VCD_DUMP_KEYWORDS_H_

#include <string_view>

namespace orsa::kesncd {

/// The four dump commands stand together and in this order; IsDumpCommand relies on it.
enum class Keyword {
  None,  // any other word
  Comment,
  Text,  // $date and $version
  Timescale,
  Scope,
  Upscope,
  Var,
  EndDefinitions,
  DumpVars,
  DumpAll,
  DumpOn,
  DumpOff,
  Close,    // $vcdclose, around a last time stamp
  Section,  // another word after a "$", such as $attrbegin
  End,
};

/// Keywords in capitals are keywords too. None for words that are no keyword and could not be one;
/// Section for unknown ones, whose words up to $end are passed over.
Keyword KeywordOf(std::string_view word);

/// Whether the library's readers know the word too: in small letters, and none of a port dump.
bool IsPlainKeyword(std::string_view word);

/// Whether the keyword can only stand where a section before it is over, $end or not.
bool StartsSection(Keyword keyword);

/// Whether it is one of the four dump commands.
bool IsDumpCommand(Keyword keyword);

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_DUMP_KEYWORDS_H_
