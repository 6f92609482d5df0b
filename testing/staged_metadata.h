// The metadata pair that the connection manager leaves on the disk for a
// staged event, written for a test.
#ifndef TESTING_STAGED_METADATA_H_
#define TESTING_STAGED_METADATA_H_

#include <cstddef>
#include <string>

#include "testing/recorder_disk.h"

// Stages `reid` on `disk`: connectionmgr/REID.xml, a description whose one
// stream holds `segments` (segment elements as written), and
// connectionmgr/REID.mtd of `mtdBytes` bytes.
inline void StageMetadata(const RecorderDisk& disk, const std::string& reid,
                          const std::string& segments, size_t mtdBytes = 0) {
  disk.WriteFile(
      "connectionmgr/" + reid + ".xml",
      "<?xml version=\"1.0\"?>\n<recording-event>\n <video>\n  <streams>\n   <stream>\n" +
          segments + "   </stream>\n  </streams>\n </video>\n</recording-event>\n");
  disk.WriteFile("connectionmgr/" + reid + ".mtd", std::string(mtdBytes, 'm'));
}

#endif  // TESTING_STAGED_METADATA_H_
