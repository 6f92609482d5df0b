// A throw-away recorder disk for tests: a folder that the sandbox mounts at
// /mnt/hd, holding streammgr/stream.db made from the schema and the
// connectionmgr/ folder for metadata files.
#ifndef TESTING_RECORDER_DISK_H_
#define TESTING_RECORDER_DISK_H_

#include <string>
#include <utility>

class RecorderDisk {
 public:
  enum class Store { kSchema, kEmptyDatabase, kNone };

  explicit RecorderDisk(Store store = Store::kSchema);
  ~RecorderDisk();
  RecorderDisk(const RecorderDisk&) = delete;
  RecorderDisk& operator=(const RecorderDisk&) = delete;

  const std::string& Path() const { return path_; }
  std::string StorePath() const { return path_ + "/streammgr/stream.db"; }

  // Runs SQL on the store; fails the current test on error.
  void Exec(const std::string& sql) const;
  // Writes a file below the disk (the path is relative to it; folders are made).
  void WriteFile(const std::string& relative, const std::string& content) const;
  std::string ReadFile(const std::string& relative) const;
  bool Exists(const std::string& relative) const;
  // Every row of every table, in a stable order: compare before and after a
  // command to prove that it changed nothing, or only what it was asked to.
  std::string Dump() const;

 private:
  std::string path_;
};

// SQL that inserts one event row; unnamed columns keep their defaults below.
struct EventRow {
  EventRow() = default;
  explicit EventRow(std::string id) : reid(std::move(id)) {}
  std::string reid;
  int state = 0;
  int splitState = 1;
  int crCode1 = 0;
  int crCode2 = 0;
  long long startTick = 1000;
  long long startTime = 1704164645;  // 01/02/24 03:04:05 UTC
  long long exportTime = 0;
  long long stopTick = 1200;
  long long stopTime = 1704164745;
  int background = 0;
  int totalFiles = 1;
  std::string groupId;
  int part = 0;
  int totalParts = 0;
  std::string answers;  // JSON text; empty for NULL
  std::string Insert() const;
};

// SQL that inserts one streamfiles row.
struct FileRow {
  long long number = 1;
  long long stream = 0;
  long long state = 0;
  long long startTick = 0;
  long long stopTick = 0;
  long long startTime = 1704164645;
  long long stopTime = 1704164745;
  long long previous = 0;
  long long next = 0;
  long long size = 98566144;
  long long type = 1;
  std::string Insert() const;
};

// Single-quotes text for SQL.
std::string Quote(const std::string& text);

#endif  // TESTING_RECORDER_DISK_H_
