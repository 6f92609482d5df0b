#include "store/store_file.h"

#include <gtest/gtest.h>

#include "store/store_fixture.h"
#include "testing/scratch_dir.h"
#include "testing/sim_named_cases.h"

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

const Opening kOpenings[] = {
    {"RegularStoreOpensAndReads", Store, "reads: stream.db file"},
    {"MissingStoreWithoutCreateCannotBeOpened", Missing, "refused: "},
    // Opened, a FIFO with no writer would keep the first read waiting for ever.
    {"FifoIsRefusedAsAFileThatCannotBeOpened", Fifo, "refused: stream.db fifo", SQLITE_OPEN_CREATE},
    {"SocketIsRefusedAsAFileThatCannotBeOpened", Socket, "refused: stream.db socket"},
    {"DeviceIsRefusedAsAFileThatCannotBeOpened", Device, "refused: "},
    // A link is followed to what it leads to: a FIFO behind one is refused too.
    {"LinkToAFifoIsRefused", LinkTo<Fifo>, "refused: stream.db link, stream.db-target fifo"},
    // SQLite would create the file that a dangling link names, wherever it is.
    {"DanglingLinkCreatesNothing", LinkTo<Missing>, "refused: stream.db link", SQLITE_OPEN_CREATE},
    {"FolderCannotBeOpened", Folder, "refused: stream.db folder"},
    {"LinkToAStoreOpensIt", LinkTo<Store>, "reads: stream.db link, stream.db-target file",
     SQLITE_OPEN_CREATE},
};

class StoreFile : public testing::TestWithParam<Opening> {};

TEST_P(StoreFile, Opens) {
  ScratchDir scratch("db-store-file");
  const std::string path = GetParam().make(scratch.Path() + "/stream.db");
  ASSERT_NE("", path);
  EXPECT_EQ(GetParam().opened, Opened(path, GetParam().flags) + ": " + Listing(scratch.Path()));
}

INSTANTIATE_NAMED_CASES(StoreFileTest, StoreFile, kOpenings);

// Refusing one store leaves SQLite's own file system the default for others.
TEST(StoreFileTest, RefusalLeavesOtherOpensAlone) {
  ScratchDir scratch("db-store-file");
  EXPECT_EQ("refused", Opened(Fifo(scratch.Path() + "/stream.db"), 0));
  EXPECT_NE("", Store(scratch.Path() + "/other.db"));
}

}  // namespace
