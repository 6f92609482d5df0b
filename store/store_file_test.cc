#include "store/store_file.h"

#include <gtest/gtest.h>

#include "store/store_fixture.h"
#include "testing/scratch_dir.h"

namespace {

// Opens `path` as the tool does, then reads the table, which reads the file's
// first page: "reads", "refused" (both the opening and the reading), or the
// result codes of both otherwise.
std::string Opened(const std::string& path, int create) {
  sqlite3* database = nullptr;
  const int opened = OpenStoreFile(path.c_str(), &database, SQLITE_OPEN_READWRITE | create);
  const int read = Exec(database, "select count(*) from t");
  sqlite3_close(database);
  if (opened == SQLITE_OK && read == SQLITE_OK) return "reads";
  if (opened == SQLITE_CANTOPEN && read != SQLITE_OK) return "refused";
  return "opened " + std::to_string(opened) + ", read " + std::to_string(read);
}

// A thing where the store should be, and what opening it gives and leaves in
// its folder.
struct Opening {
  const char* name;
  Maker make;
  int create;
  const char* opened;
};

const Opening kOpenings[] = {
    {"RegularStoreOpensAndReads", Store, 0, "reads: stream.db file"},
    {"MissingStoreWithoutCreateCannotBeOpened", Missing, 0, "refused: "},
    // Opened, a FIFO with no writer would keep the first read waiting for ever.
    {"FifoIsRefusedAsAFileThatCannotBeOpened", Fifo, SQLITE_OPEN_CREATE, "refused: stream.db fifo"},
    {"SocketIsRefusedAsAFileThatCannotBeOpened", Socket, 0, "refused: stream.db socket"},
    {"DeviceIsRefusedAsAFileThatCannotBeOpened", Device, 0, "refused: "},
    // A link is followed to what it leads to: a FIFO behind one is refused too.
    {"LinkToAFifoIsRefused", LinkTo<Fifo>, 0, "refused: stream.db link, stream.db-target fifo"},
    // SQLite would create the file that a dangling link names, wherever it is.
    {"DanglingLinkCreatesNothing", LinkTo<Missing>, SQLITE_OPEN_CREATE, "refused: stream.db link"},
    {"FolderCannotBeOpened", Folder, 0, "refused: stream.db folder"},
    {"LinkToAStoreOpensIt", LinkTo<Store>, SQLITE_OPEN_CREATE,
     "reads: stream.db link, stream.db-target file"},
};

std::string NameOf(const testing::TestParamInfo<Opening>& info) { return info.param.name; }

class StoreFile : public testing::TestWithParam<Opening> {};

TEST_P(StoreFile, Opens) {
  ScratchDir scratch("db-store-file");
  const std::string path = GetParam().make(scratch.Path() + "/stream.db");
  ASSERT_NE("", path);
  EXPECT_EQ(GetParam().opened, Opened(path, GetParam().create) + ": " + Listing(scratch.Path()));
}

INSTANTIATE_TEST_SUITE_P(StoreFileTest, StoreFile, testing::ValuesIn(kOpenings), NameOf);

// Refusing one store leaves SQLite's own file system the default for others.
TEST(StoreFileTest, RefusalLeavesOtherOpensAlone) {
  ScratchDir scratch("db-store-file");
  EXPECT_EQ("refused", Opened(Fifo(scratch.Path() + "/stream.db"), 0));
  EXPECT_NE("", Store(scratch.Path() + "/other.db"));
}

}  // namespace
