// Kinds of dump lines. A keyword means something only on a line with exactly its number of words:
// "$timescale 1ns $end" is no time-scale line, "$upscope" alone closes nothing.
#ifndef KESNCD_LINE_READERS_VCD_LINE_H_
#define KESNCD_LINE_READERS_VCD_LINE_H_

namespace orsa::kesncd {

/// The characters between words of a dump line.
inline constexpr char kVcdBlanks[] = " \n\r\t";

/// Stamps and scalar changes are Word, vectors Other.
enum class LineKind {
  Timescale,       // "$timescale"
  RecordingOn,     // "$dumpall", "$dumpon" or "$dumpvars"
  RecordingOff,    // "$dumpoff"
  Word,            // any other single word
  Upscope,         // "$upscope $end"
  EndDefinitions,  // "$enddefinitions $end"
  Scope,           // "$scope KIND NAME $end"
  Other,           // every other line with words
};

/// A line cut into words; `count` is at least 1 where its kind is asked. The words are the
/// splitter's, valid until its next call.
struct VcdLine {
  char** words;
  int count;

  // `index` is below `count`.
  bool Is(int index, const char* text) const;
  LineKind Kind() const;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_VCD_LINE_H_
