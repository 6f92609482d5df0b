// Takes what code under test writes to one standard stream, for as long as
// the capture lives; the stream's buffer and format come back afterwards.
#ifndef TESTING_STREAM_CAPTURE_H_
#define TESTING_STREAM_CAPTURE_H_

#include <ostream>
#include <sstream>
#include <string>

class StreamCapture {
 public:
  explicit StreamCapture(std::ostream& stream)
      : stream_(stream),
        flags_(stream.flags()),
        precision_(stream.precision()),
        previous_(stream.rdbuf(text_.rdbuf())) {}
  ~StreamCapture() {
    stream_.rdbuf(previous_);
    stream_.flags(flags_);
    stream_.precision(precision_);
  }
  StreamCapture(const StreamCapture&) = delete;
  StreamCapture& operator=(const StreamCapture&) = delete;

  std::string Text() const { return text_.str(); }

 private:
  std::ostream& stream_;
  std::ios::fmtflags flags_;
  std::streamsize precision_;
  std::ostringstream text_;
  std::streambuf* previous_;
};

#endif  // TESTING_STREAM_CAPTURE_H_
