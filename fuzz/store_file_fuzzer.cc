// Fuzzes db on whole store files: the input is written as the store, and the
// tool starts up on it and runs its read-only handlers in process on the
// direct path, as "db -t -e -E -r r1 -p -u -f '*' -a s" would, with the
// output discarded. A damaged store must never crash db or keep it busy:
// libFuzzer's time-out makes an input that does a finding. Nor may it change
// the store, which it was only asked to read.
//
// The event listings hand the events with NULL fields to the recorder's sql
// command through the shell. That command is a process of its own with its
// own connection, outside what this target tests, so here "sql" is found as
// a stand-in that prints nothing and succeeds: the tool still flushes and
// runs the shell as usual.
#include <sqlite3.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "cli/dispatch.h"
#include "cli/start_up.h"
#include "cli/tool_context.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/quiet_streams.h"

namespace {

// The options run on every input, in this order.
const char* const kOptions[] = {"-t", "-e", "-E", "-r", "r1", "-p", "-u", "-f", "*", "-a", "s"};

std::string& ScratchFolder() {
  static std::string folder;
  return folder;
}

std::string StorePath() { return ScratchFolder() + "/stream.db"; }

// Leaves no file of the last input behind: a journal or WAL file of one store
// would be read as part of the next.
void RemoveStoreFiles() {
  for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
    unlink((StorePath() + suffix).c_str());
  }
}

std::string ReadStore() {
  std::string content;
  FILE* store = std::fopen(StorePath().c_str(), "rb");
  Require(store != nullptr);
  char buffer[65536];
  size_t read = 0;
  while ((read = std::fread(buffer, 1, sizeof buffer, store)) > 0) content.append(buffer, read);
  std::fclose(store);
  return content;
}

void WriteStore(const uint8_t* data, size_t size) {
  RemoveStoreFiles();
  FILE* store = std::fopen(StorePath().c_str(), "wb");
  Require(store != nullptr);
  Require(std::fwrite(data, 1, size, store) == size);
  Require(std::fclose(store) == 0);
}

// Each input starts from the state db has when its process starts: no
// connection, the direct path, no file sizes of an earlier store.
void FreshToolContext() {
  toolContext.running = false;
  toolContext.database = nullptr;
  toolContext.fileAccess.~StreamFileAccess();
  new (&toolContext.fileAccess) StreamFileAccess();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  QuietStreams();
  char pattern[] = "/tmp/store-file-fuzzer-XXXXXX";
  Require(mkdtemp(pattern) != nullptr);
  ScratchFolder() = pattern;
  const std::string stub = ScratchFolder() + "/sql";
  Require(symlink("/bin/true", stub.c_str()) == 0);
  Require(setenv("PATH", (ScratchFolder() + ":/usr/bin:/bin").c_str(), 1) == 0);
  std::atexit([] {
    RemoveStoreFiles();
    unlink((ScratchFolder() + "/sql").c_str());
    rmdir(ScratchFolder().c_str());
  });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  QuietStreams();
  WriteStore(data, size);
  FreshToolContext();
  std::vector<std::string> words = {"db"};
  words.insert(words.end(), std::begin(kOptions), std::end(kOptions));
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  argv.push_back(nullptr);
  optind = 0;  // getopt starts over with every command line
  RunOptionLoop(static_cast<int>(words.size()), argv.data(), StartUpOn(StorePath().c_str()));
  // db leaves its connection to the end of the process; here the next input
  // needs a store of its own.
  sqlite3_close_v2(toolContext.database);
  toolContext.database = nullptr;
  Require(ReadStore() == std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
