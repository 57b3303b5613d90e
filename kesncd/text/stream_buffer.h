// What a stream holds read ahead, seen in place. Taking a word from there spares a call, and a wait
// for the stream's own pointer, on each of its characters; the stream stands where reading them one
// by one would have left it.
#ifndef KESNCD_TEXT_STREAM_BUFFER_H_
#define KESNCD_TEXT_STREAM_BUFFER_H_

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace orsa::kesncd {

#ifdef __GLIBC__
// These members are what the C library's own getc_unlocked uses in the programs that call it.

/// The bytes that the stream would give next, as far as it has read them; empty for no stream.
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
inline std::string_view ReadAhead(const std::FILE* /*stream*/) {
  return {};
}
inline void TakeAhead(std::FILE* /*stream*/, std::size_t /*bytes*/) {}
#endif

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_STREAM_BUFFER_H_
