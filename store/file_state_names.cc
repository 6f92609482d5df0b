#include "store/file_state_names.h"

#include <cstdint>

const char* FileStateToStr(StreamMgrApi::StreamFileState state) {
  // "Allocatd" is shortened to keep eight characters; "Free" is padded to eight.
  static const char* const kNames[] = {"Free    ", "Allocatd", "UsedFree", "UsedKeep"};
  const uint32_t value = state;
  return value < sizeof kNames / sizeof kNames[0] ? kNames[value] : "Invalid";
}

const char* FileTypeToStr(StreamMgrApi::StreamFileType type) {
  static const char* const kNames[] = {"Init", "Norm", "Bkgd", "Wiped"};
  const uint32_t value = type;
  return value < sizeof kNames / sizeof kNames[0] ? kNames[value] : "Invalid";
}
