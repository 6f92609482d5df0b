// The recorder's fixed places and commands that db relies on: the disk the
// stream manager records to, its store, the folder where the connection
// manager stages events, and the recorder's own command-line tools.
#ifndef RECORDER_RECORDER_PLACES_H_
#define RECORDER_RECORDER_PLACES_H_

namespace Recorder {

// The recording disk.
constexpr const char* kDisk = "/mnt/hd";
// The stream manager's database; it owns the file while it runs.
constexpr const char* kStorePath = "/mnt/hd/streammgr/stream.db";
// The connection manager's metadata files, with the trailing slash.
constexpr const char* kMetadataFolder = "/mnt/hd/connectionmgr/";

// Prints a line of process ids when StreamMgr runs, nothing otherwise.
constexpr const char* kDaemonProbe = "pidof StreamMgr";
// The commands below take their argument after the trailing space.
// Runs one quoted SQL statement on the store and prints its rows.
constexpr const char* kSqlCommand = "sql ";
// Copies stream file N out to the disk and prints "copied: NAME".
constexpr const char* kExtractCommand = "StreamMgrCli -x ";
// Checks one stream file's packets and prints a line per finding.
constexpr const char* kPacketCheckCommand = "filePes -a ";

// The time-out, in milliseconds, of a request to the recorder's daemons.
constexpr int kRequestTimeoutMs = 60000;

}  // namespace Recorder

#endif  // RECORDER_RECORDER_PLACES_H_
