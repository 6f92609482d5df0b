// The code under test reports on std::cout and std::cerr; at thousands of
// runs a second that would drown the fuzzer's own output, so the streams
// write into a buffer that is dropped instead.
#ifndef FUZZ_QUIET_STREAMS_H_
#define FUZZ_QUIET_STREAMS_H_

#include <iostream>
#include <streambuf>

class DiscardingBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

// Silences both streams for the life of the process, and puts std::cout back
// into its good state so that one input's failure does not hide the next's.
inline void QuietStreams() {
  static DiscardingBuffer discard;
  std::cout.rdbuf(&discard);
  std::cerr.rdbuf(&discard);
  std::cout.clear();
  std::cerr.clear();
}

#endif  // FUZZ_QUIET_STREAMS_H_
