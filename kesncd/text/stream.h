// Reading a stream that a signal may interrupt.
//
// A host's signal handlers may interrupt a read from a pipe or a network file. The C library
// reports that as an error, although nothing is lost and the next read goes on.
#ifndef KESNCD_TEXT_STREAM_H_
#define KESNCD_TEXT_STREAM_H_

#include <cerrno>
#include <cstdio>

namespace orsa::kesncd {

/// Whether a read ended because a signal came; if so, the stream is good to read on.
inline bool WasInterrupted(std::FILE* stream) {
  if (std::ferror(stream) == 0 || errno != EINTR) return false;
  std::clearerr(stream);
  return true;
}

/// The next character; EOF at the end of the stream or on a read error.
inline int ReadCharacter(std::FILE* stream) {
  int c = getc_unlocked(stream);
  while (c == EOF && WasInterrupted(stream)) c = getc_unlocked(stream);
  return c;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_STREAM_H_
