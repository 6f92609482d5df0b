// How the recorder counts the times and sizes that db shows beside its own:
// times are signed 32-bit seconds whose differences wrap in 32 bits, and
// sizes in GiB are of 2^30 bytes.
#ifndef STORE_RECORDER_ARITHMETIC_H_
#define STORE_RECORDER_ARITHMETIC_H_

#include <cstdint>

// A stop before its start gives a negative span rather than a clamped one,
// as it does on the recorder.
inline int32_t WrappedDifference(int64_t later, int64_t earlier) {
  return static_cast<int32_t>(static_cast<uint32_t>(later) - static_cast<uint32_t>(earlier));
}

constexpr double kBytesPerGiB = 1073741824.0;

#endif  // STORE_RECORDER_ARITHMETIC_H_
