// Reading a stream: in place, where it has read ahead, and through the signals that interrupt it.
#ifndef KESNCD_TEXT_STREAM_H_
#define KESNCD_TEXT_STREAM_H_

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace orsa::kesncd {

// A stream may come with its error flag set: reading goes on all the same, as with fgets. So what a
// read that came back short means is asked of the end-of-file flag, which an error leaves alone.

/// Whether a read that came back short was interrupted by a signal; if so, the stream is good to
/// read on. A host's signal handlers may interrupt a read from a pipe or a network file. The C
/// library reports that as an error, although nothing is lost.
inline bool WasInterrupted(std::FILE* stream) {
  // errno is asked last: it is only of this read when the read failed.
  if (std::feof(stream) != 0 || std::ferror(stream) == 0 || errno != EINTR) return false;
  std::clearerr(stream);
  return true;
}

/// Whether a read that came back short, and was not interrupted, failed. By the end-of-file flag,
/// for the reason above.
inline bool HasFailed(std::FILE* stream) {
  return std::feof(stream) == 0;
}

/// The next character; EOF at the end of the stream or on a read error.
inline int ReadCharacter(std::FILE* stream) {
  int c = getc_unlocked(stream);
  while (c == EOF && WasInterrupted(stream)) c = getc_unlocked(stream);
  return c;
}

#ifdef __GLIBC__
// These members are what the C library's own getc_unlocked uses in the programs that call it. The
// lexer and the line source look at them only between calls of the C library on the same stream, in
// one thread, so the stream is never in the middle of a change.

/// The bytes that the stream would give next, as far as it has read them; empty for no stream.
/// Taking a word or a line from there spares a call, and a wait for the stream's own pointer, on
/// each of its characters.
inline std::string_view ReadAhead(const std::FILE* stream) {
  if (stream == nullptr || stream->_IO_read_ptr >= stream->_IO_read_end) return {};
  return {stream->_IO_read_ptr,
          static_cast<std::size_t>(stream->_IO_read_end - stream->_IO_read_ptr)};
}

/// Takes the first `bytes` of them; nothing for no stream.
inline void TakeAhead(std::FILE* stream, std::size_t bytes) {
  if (bytes > 0) stream->_IO_read_ptr += bytes;
}
#else
/// Other C libraries: every character comes by ReadCharacter.
inline std::string_view ReadAhead(const std::FILE* /*stream*/) {
  return {};
}
inline void TakeAhead(std::FILE* /*stream*/, std::size_t /*bytes*/) {}
#endif

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_STREAM_H_
