// The StreamMgr simulator's answers, served by the real daemon loop on a
// thread of the test and asked through the real client requests.
#include "sim/stream_mgr/stream_mgr_service.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"
#include "recorder/host/served_daemon.h"
#include "recorder/stream_db.h"
#include "recorder/stream_mgr_api.h"
#include "store/sql_statement.h"
#include "testing/recorder_disk.h"

namespace {

using HostIpc::ServedDaemon;
using StreamMgrApi::EventRecordListMessage;
using StreamMgrApi::StreamfileRecordListMessage;

// A store, the simulator serving it, and a client endpoint connected to it.
class Served {
 public:
  explicit Served(const RecorderDisk& disk, StreamMgrOptions options = StreamMgrOptions())
      : database_(OpenOwnedStore(disk.StorePath())),
        service_(database_, std::move(options)),
        daemon_(
            HostIpc::kStreamMgrName,
            [this](const std::string& request) { return service_.Handle(request); }, 0,
            [this] { service_.HungUp(); }) {
    daemon_.Aim(ipc);
    EXPECT_EQ(0, ipc.Init());
  }
  ~Served() {
    daemon_.Stop();
    sqlite3_close(database_);
  }

  HostIpc::ServeEnd Stop() { return daemon_.Stop(); }
  std::string Path() const { return daemon_.Path(); }

  // The live size the simulator reports for a file; false when it fails.
  bool LiveSize(uint32_t number, uint32_t& size) const {
    std::string answer;
    return HostIpc::ExchangeOnce(daemon_.Path(), HostIpc::LiveSizeRequest(number), answer, 5000) &&
           HostIpc::DecodeLiveSizeAnswer(answer, size);
  }

  LinxIpc ipc{"test"};

 private:
  sqlite3* database_;
  StreamMgrService service_;
  ServedDaemon daemon_;
};

// What the tool's direct path loads for `sql` with the row loader `load`,
// encoded by `encode` for comparison.
template <typename Item>
std::string Direct(const RecorderDisk& disk, const std::string& sql, Item (*load)(SQLStatement&),
                   std::string (*encode)(const std::vector<Item>&)) {
  sqlite3* database = nullptr;
  sqlite3_open(disk.StorePath().c_str(), &database);
  std::vector<Item> items;
  {
    SQLStatement statement(database, sql);
    while (statement.Step() == kStepRow) items.push_back(load(statement));
  }
  sqlite3_close(database);
  return encode(items);
}

std::string DirectEvents(const RecorderDisk& disk, const std::string& sql) {
  return Direct(disk, sql, StreamDB::LoadEventInfoFromStatement, HostIpc::EventsAnswer);
}

std::string DirectFiles(const RecorderDisk& disk, const std::string& sql) {
  return Direct(disk, sql, StreamDB::LoadFileInfoFromStatement, HostIpc::FilesAnswer);
}

void FillStore(const RecorderDisk& disk) {
  EventRow a{"a"};
  a.state = 1;
  a.answers = R"([["Q1","A1"],["Q2","A2"]])";
  EventRow b{"b'quote"};
  b.groupId = "g";
  b.part = 1;
  b.totalParts = 2;
  b.startTime = -1;
  b.startTick = 4294967295;
  EventRow c{"c \xc3\xa9"};
  c.exportTime = 2147483648;  // wraps to 32 bits
  FileRow one, two, three;
  two.number = 2;
  two.state = 3;
  two.size = -1;
  three.number = 3;
  three.previous = 2;
  three.type = 7;
  disk.Exec(a.Insert() + b.Insert() + c.Insert() + one.Insert() + two.Insert() + three.Insert() +
            "insert into status values ('version', '1');");
}

// Every kind of request fails: empty lists, the count left as it was, no delete.
void ExpectEveryRequestFails(LinxIpc& ipc) {
  EventRecordListMessage events;
  EXPECT_FALSE(StreamMgrApi::GetEventsFromSqlStatement(ipc, "select * from events", events, 5000));
  EXPECT_TRUE(events.items.empty());
  StreamfileRecordListMessage files;
  EXPECT_FALSE(
      StreamMgrApi::GetFilesFromSqlStatement(ipc, "select * from streamfiles", files, 5000));
  EXPECT_TRUE(files.items.empty());
  unsigned int count = 5;
  EXPECT_FALSE(
      StreamMgrApi::GetCountFromSqlStatement(ipc, "select count(*) from events", count, 5000));
  EXPECT_EQ(5u, count);
  EXPECT_FALSE(StreamMgrApi::DeleteEvent("a", ipc));
}

TEST(StreamMgrService, EventsAreTheRecordsOfTheDirectPath) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  for (const std::string sql :
       {"select * from events", "select * from events order by reid desc",
        "select * from events where reid='a'", "select * from events where 0"}) {
    SCOPED_TRACE(sql);
    EventRecordListMessage list;
    EXPECT_TRUE(StreamMgrApi::GetEventsFromSqlStatement(served.ipc, sql, list, 5000));
    EXPECT_EQ(DirectEvents(disk, sql), HostIpc::EventsAnswer(list.items));
  }
  EventRecordListMessage list;
  StreamMgrApi::GetEventsFromSqlStatement(served.ipc, "select * from events", list, 5000);
  ASSERT_EQ(3u, list.items.size());
  ASSERT_EQ(2u, list.items[0].answers.entries.size());
  EXPECT_EQ("A2", list.items[0].answers.entries[1].answer.GetValue());
  EXPECT_EQ(-1, list.items[1].startTime.GetValue());
}

TEST(StreamMgrService, FilesAreTheRecordsOfTheDirectPath) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  for (const std::string sql :
       {"select * from streamfiles", "select * from streamfiles order by number desc limit 2",
        "select * from streamfiles limit 1000 offset 2", "select * from streamfiles where 0"}) {
    SCOPED_TRACE(sql);
    StreamfileRecordListMessage list;
    EXPECT_TRUE(StreamMgrApi::GetFilesFromSqlStatement(served.ipc, sql, list, 5000));
    EXPECT_EQ(DirectFiles(disk, sql), HostIpc::FilesAnswer(list.items));
  }
}

TEST(StreamMgrService, CountIsColumnZeroOfTheFirstRow) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  unsigned int count = 99;
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select count(*) from events",
                                                     count, 5000));
  EXPECT_EQ(3u, count);
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select count(*) from status",
                                                     count, 5000));
  EXPECT_EQ(1u, count);
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(
      served.ipc, "select 7, 8 union all select 9, 10", count, 5000));
  EXPECT_EQ(7u, count);
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select 4294967297", count, 5000));
  EXPECT_EQ(1u, count);  // cut to 32 bits
  count = 99;
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select 1 where 0", count, 5000));
  EXPECT_EQ(99u, count);
}

TEST(StreamMgrService, OnlyTheFirstStatementOfTheTextRuns) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  Served served(disk);
  unsigned int count = 0;
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(
      served.ipc, "select count(*) from events; delete from events", count, 5000));
  EXPECT_EQ(3u, count);
  EventRecordListMessage list;
  EXPECT_TRUE(StreamMgrApi::GetEventsFromSqlStatement(
      served.ipc, "select * from events where reid='a'; drop table events", list, 5000));
  EXPECT_EQ(1u, list.items.size());
  EXPECT_EQ(before, disk.Dump());
}

TEST(StreamMgrService, TextThatDoesNotPrepareIsAFailedRequest) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  EventRecordListMessage events;
  EXPECT_FALSE(
      StreamMgrApi::GetEventsFromSqlStatement(served.ipc, "select * from nosuch", events, 5000));
  EXPECT_TRUE(events.items.empty());
  StreamfileRecordListMessage files;
  EXPECT_FALSE(StreamMgrApi::GetFilesFromSqlStatement(served.ipc, "", files, 5000));
  EXPECT_TRUE(files.items.empty());
  unsigned int count = 99;
  EXPECT_FALSE(
      StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select count(*) from", count, 5000));
  EXPECT_EQ(99u, count);
  // The connection is fine afterwards.
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select count(*) from events",
                                                     count, 5000));
  EXPECT_EQ(3u, count);
}

TEST(StreamMgrService, StepErrorIsAFailedRequestNotAPartialList) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  // The overflow strikes at the second row, after one row was loaded.
  const std::string failing =
      " where case when reid='a' then 1 else abs(-9223372036854775807 - 1) end order by reid";
  EventRecordListMessage events;
  EXPECT_FALSE(StreamMgrApi::GetEventsFromSqlStatement(served.ipc, "select * from events" + failing,
                                                       events, 5000));
  EXPECT_TRUE(events.items.empty());
  unsigned int count = 99;
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(
      served.ipc, "select abs(-9223372036854775807 - 1)", count, 5000));
  EXPECT_EQ(99u, count);
}

TEST(StreamMgrService, AnswerTooBigForOneFrameIsAFailedRequest) {
  RecorderDisk disk;
  // 34 events with a description of 1 MiB each: more than one frame may hold.
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 34) "
      "insert into events (reid, description) "
      "select 'r' || i, replace(hex(zeroblob(524288)), '0', 'x') from n;");
  Served served(disk);
  EventRecordListMessage list;
  EXPECT_FALSE(
      StreamMgrApi::GetEventsFromSqlStatement(served.ipc, "select * from events", list, 30000));
  EXPECT_TRUE(list.items.empty());
  // 31 of them fit, and the connection is still good.
  EXPECT_TRUE(StreamMgrApi::GetEventsFromSqlStatement(
      served.ipc, "select * from events where reid not in ('r1', 'r2', 'r3')", list, 30000));
  EXPECT_EQ(31u, list.items.size());
}

TEST(StreamMgrService, DeleteRemovesOneEventRow) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  EXPECT_TRUE(StreamMgrApi::DeleteEvent("b'quote", served.ipc));
  EXPECT_FALSE(StreamMgrApi::DeleteEvent("b'quote", served.ipc));  // gone already
  EXPECT_FALSE(StreamMgrApi::DeleteEvent("g", served.ipc));        // a groupId is no reid
  EXPECT_FALSE(StreamMgrApi::DeleteEvent("' or 1=1 --", served.ipc));
  EventRecordListMessage list;
  StreamMgrApi::GetEventsFromSqlStatement(served.ipc, "select * from events order by reid", list,
                                          5000);
  ASSERT_EQ(2u, list.items.size());
  EXPECT_EQ("a", list.items[0].reid.GetValue());
  EXPECT_EQ("c \xc3\xa9", list.items[1].reid.GetValue());
}

TEST(StreamMgrService, RefusedDeleteDeletesNothing) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  StreamMgrOptions options;
  options.refusedDeletes = {"a", "c \xc3\xa9"};
  {
    Served served(disk, options);
    EXPECT_FALSE(StreamMgrApi::DeleteEvent("a", served.ipc));
    EXPECT_FALSE(StreamMgrApi::DeleteEvent("c \xc3\xa9", served.ipc));
  }
  EXPECT_EQ(before, disk.Dump());
  {
    Served served(disk, options);
    EXPECT_TRUE(StreamMgrApi::DeleteEvent("b'quote", served.ipc));
  }
  EXPECT_NE(before, disk.Dump());
}

TEST(StreamMgrService, FailingRequestsAnswerNothingAndChangeNothing) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  StreamMgrOptions options;
  options.failRequests = true;
  Served served(disk, options);
  ExpectEveryRequestFails(served.ipc);
  EXPECT_EQ(before, disk.Dump());
}

TEST(StreamMgrService, GarbageAnswersFailEveryRequest) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  StreamMgrOptions options;
  options.garbage = true;
  Served served(disk, options);
  ExpectEveryRequestFails(served.ipc);
  uint32_t size = 0;
  EXPECT_FALSE(served.LiveSize(1, size));
  EXPECT_EQ(before, disk.Dump());
}

TEST(StreamMgrService, DiesWhenTheRequestAfterTheLastAllowedArrives) {
  RecorderDisk disk;
  FillStore(disk);
  StreamMgrOptions options;
  options.dieAfterSet = true;
  options.dieAfter = 2;
  Served served(disk, options);
  unsigned int count = 0;
  uint32_t size = 0;
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select 1", count, 5000));
  EXPECT_TRUE(served.LiveSize(1, size));  // not one of the counted requests
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select 2", count, 5000));
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select 3", count, 5000));
  EXPECT_EQ(2u, count);
  EXPECT_EQ(HostIpc::ServeEnd::kDied, served.Stop());
}

TEST(StreamMgrService, DieAfterZeroAnswersNothing) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  StreamMgrOptions options;
  options.dieAfterSet = true;
  Served served(disk, options);
  EXPECT_FALSE(StreamMgrApi::DeleteEvent("a", served.ipc));
  EXPECT_EQ(HostIpc::ServeEnd::kDied, served.Stop());
  EXPECT_EQ(before, disk.Dump());
}

TEST(StreamMgrService, LogHasOneLinePerRequestReceived) {
  RecorderDisk disk;
  FillStore(disk);
  StreamMgrOptions options;
  options.logPath = disk.Path() + "/requests.log";
  options.refusedDeletes = {"a"};
  Served served(disk, options);
  EventRecordListMessage events;
  StreamMgrApi::GetEventsFromSqlStatement(served.ipc, "select * from events", events, 5000);
  StreamfileRecordListMessage files;
  StreamMgrApi::GetFilesFromSqlStatement(served.ipc, "select * from nosuch", files, 5000);
  unsigned int count = 0;
  StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select count(*) from status", count, 5000);
  StreamMgrApi::DeleteEvent("a", served.ipc);
  StreamMgrApi::DeleteEvent("b'quote", served.ipc);
  uint32_t size = 0;
  served.LiveSize(2, size);
  EXPECT_EQ(
      "events\tselect * from events\n"
      "files\tselect * from nosuch\n"
      "count\tselect count(*) from status\n"
      "delete\ta\n"
      "delete\tb'quote\n",
      disk.ReadFile("requests.log"));
}

TEST(StreamMgrService, LogIsAppendedTo) {
  RecorderDisk disk;
  disk.WriteFile("requests.log", "earlier\n");
  StreamMgrOptions options;
  options.logPath = disk.Path() + "/requests.log";
  Served served(disk, options);
  unsigned int count = 0;
  StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select count(*) from events", count, 5000);
  EXPECT_EQ("earlier\ncount\tselect count(*) from events\n", disk.ReadFile("requests.log"));
}

TEST(StreamMgrService, FailingAndDyingRequestsAreLoggedToo) {
  RecorderDisk disk;
  StreamMgrOptions options;
  options.logPath = disk.Path() + "/requests.log";
  options.failRequests = true;
  options.dieAfterSet = true;
  options.dieAfter = 1;
  Served served(disk, options);
  unsigned int count = 0;
  StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select 1", count, 5000);
  StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select 2", count, 5000);
  EXPECT_EQ("count\tselect 1\ncount\tselect 2\n", disk.ReadFile("requests.log"));
}

TEST(StreamMgrService, LiveSizeIsTheGivenOneOrTheStoredOne) {
  RecorderDisk disk;
  FillStore(disk);
  StreamMgrOptions options;
  options.liveSizes = {{3, 12345}, {4294967295u, 1}, {99, 0}};
  Served served(disk, options);
  uint32_t size = 0;
  ASSERT_TRUE(served.LiveSize(3, size));
  EXPECT_EQ(12345u, size);
  ASSERT_TRUE(served.LiveSize(1, size));
  EXPECT_EQ(98566144u, size);
  ASSERT_TRUE(served.LiveSize(2, size));
  EXPECT_EQ(4294967295u, size);  // a stored -1 reads as unsigned
  ASSERT_TRUE(served.LiveSize(99, size));
  EXPECT_EQ(0u, size);  // given, though the store has no such file
  size = 7;
  EXPECT_FALSE(served.LiveSize(5, size));
  EXPECT_EQ(7u, size);
}

TEST(StreamMgrService, SettingsAreNotItsBusiness) {
  RecorderDisk disk;
  Served served(disk);
  std::string answer;
  VideoRecordingSettings settings;
  ASSERT_TRUE(HostIpc::ExchangeOnce(served.Path(), HostIpc::SettingsRequest(), answer, 5000));
  EXPECT_FALSE(HostIpc::DecodeSettingsAnswer(answer, settings));
}

TEST(StreamMgrService, MissingStoreFailsEveryQueryAndIsNotCreated) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  Served served(disk);
  ExpectEveryRequestFails(served.ipc);
  uint32_t size = 0;
  EXPECT_FALSE(served.LiveSize(1, size));
  EXPECT_FALSE(disk.Exists("streammgr/stream.db"));
}

TEST(StreamMgrService, StoreThatIsNotADatabaseFailsEveryQuery) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  disk.WriteFile("streammgr/stream.db", std::string(4096, 'x'));
  Served served(disk);
  unsigned int count = 3;
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select count(*) from events",
                                                      count, 5000));
  EXPECT_FALSE(StreamMgrApi::DeleteEvent("a", served.ipc));
  EXPECT_EQ(std::string(4096, 'x'), disk.ReadFile("streammgr/stream.db"));
}

// Pages of "QUERY limit 1000 offset N" are answered by stepping on one kept
// statement; every page must still be exactly what its own text selects.
TEST(StreamMgrService, PagesAreThoseOfTheirOwnTexts) {
  RecorderDisk disk;
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 2500) "
      "insert into streamfiles select i, i % 4, i % 3, i * 10, i * 10 + 9, 1704164645 + i, "
      "1704164745 + i, i - 1, i + 1, 98566144 - i, 1 from n;");
  Served served(disk);
  for (const std::string query :
       {"select * from streamfiles where  number like '%' order by number asc",
        "select * from streamfiles where  number like '%' and stream=2 order by number desc",
        "select * from streamfiles where  number like '%' order by starttick desc"}) {
    for (int offset = 0; offset <= 3000; offset += 1000) {
      const std::string sql = query + " limit 1000 offset " + std::to_string(offset);
      StreamfileRecordListMessage page;
      ASSERT_TRUE(StreamMgrApi::GetFilesFromSqlStatement(served.ipc, sql, page, 5000));
      EXPECT_EQ(DirectFiles(disk, sql), HostIpc::FilesAnswer(page.items)) << sql;
    }
  }
}

TEST(StreamMgrService, PageAfterAnotherRequestIsRunAfresh) {
  RecorderDisk disk;
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 2500) "
      "insert into events (reid, starttick, groupId) select printf('R%05d', i), i, '' from n;");
  Served served(disk);
  const std::string query = "select * from events";
  auto page = [&](int offset) {
    const std::string sql = query + " limit 1000 offset " + std::to_string(offset);
    EventRecordListMessage events;
    EXPECT_TRUE(StreamMgrApi::GetEventsFromSqlStatement(served.ipc, sql, events, 5000));
    EXPECT_EQ(DirectEvents(disk, sql), HostIpc::EventsAnswer(events.items)) << sql;
    return events.items.size();
  };
  EXPECT_EQ(1000u, page(0));
  // The rows move up under the next page: it must see them where they are now.
  ASSERT_TRUE(StreamMgrApi::DeleteEvent("R00005", served.ipc));
  EXPECT_EQ(1000u, page(1000));
  unsigned int count = 0;
  ASSERT_TRUE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select count(*) from events",
                                                     count, 5000));
  EXPECT_EQ(2499u, count);
  EXPECT_EQ(499u, page(2000));
  // Asked again from the start, and out of order.
  EXPECT_EQ(1000u, page(0));
  EXPECT_EQ(499u, page(2000));
  EXPECT_EQ(1000u, page(1000));
}

TEST(StreamMgrService, ClientLeavingAHalfPagedListingLetsWritersIn) {
  RecorderDisk disk;
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 2500) "
      "insert into events (reid, starttick, groupId) select printf('R%05d', i), i, '' from n;");
  Served served(disk);
  {
    LinxIpc client{"client"};
    HostIpc::EndpointOf(client).endpointDir = HostIpc::EndpointOf(served.ipc).endpointDir;
    ASSERT_EQ(0, client.Init());
    EventRecordListMessage events;
    ASSERT_TRUE(StreamMgrApi::GetEventsFromSqlStatement(
        client, "select * from events limit 1000 offset 0", events, 5000));
    ASSERT_EQ(1000u, events.items.size());
    // The next page is to continue from where this one stopped, so its
    // statement holds the store meanwhile.
    sqlite3* early = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(disk.StorePath().c_str(), &early));
    EXPECT_EQ(SQLITE_BUSY, sqlite3_exec(early, "delete from events", nullptr, nullptr, nullptr));
    sqlite3_close(early);
  }  // the client ends in the middle of its listing
  sqlite3* writer = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(disk.StorePath().c_str(), &writer));
  sqlite3_busy_timeout(writer, 5000);
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(writer, "delete from events", nullptr, nullptr, nullptr))
      << sqlite3_errmsg(writer);
  sqlite3_close(writer);
  unsigned int count = 5;
  ASSERT_TRUE(StreamMgrApi::GetCountFromSqlStatement(served.ipc, "select count(*) from events",
                                                     count, 5000));
  EXPECT_EQ(0u, count);
}

// Serves stream files 1 to 200000 and asks for the 200 pages of 1000 files
// that `text` spells for each offset: every file comes once, in order. How
// long that takes is measured by bench/run, beside the direct path.
void PageThroughTwoHundredThousandFiles(const std::function<std::string(int)>& text) {
  RecorderDisk disk;
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 200000) "
      "insert into streamfiles select i, i % 4, i % 4, i * 10, i * 10 + 9, 1704164645 + i, "
      "1704164745 + i, i - 1, i + 1, 98566144, 1 from n;");
  Served served(disk);
  uint32_t next = 1;
  for (int offset = 0; offset < 200000; offset += 1000) {
    StreamfileRecordListMessage page;
    EXPECT_TRUE(StreamMgrApi::GetFilesFromSqlStatement(served.ipc, text(offset), page, 60000));
    if (page.items.size() != 1000u) {
      ADD_FAILURE() << text(offset) << ": " << page.items.size() << " files";
      return;
    }
    for (const StreamMgrApi::StreamfileRecordItem& file : page.items) {
      ASSERT_EQ(next, file.number.GetValue()) << text(offset);
      ++next;
    }
  }
  StreamfileRecordListMessage after;
  EXPECT_TRUE(StreamMgrApi::GetFilesFromSqlStatement(served.ipc, text(200000), after, 60000));
  EXPECT_TRUE(after.items.empty());
}

TEST(StreamMgrService, TwoHundredThousandFilesPagedByKeyRange) {
  PageThroughTwoHundredThousandFiles([](int offset) {
    return "select * from streamfiles where number > " + std::to_string(offset) +
           " order by number asc limit 1000";
  });
}

// The tool's own paged texts, which the page cursor answers.
TEST(StreamMgrService, TwoHundredThousandFilesPagedByOffset) {
  PageThroughTwoHundredThousandFiles([](int offset) {
    return "select * from streamfiles where  number like '%' order by number asc "
           "limit 1000 offset " +
           std::to_string(offset);
  });
}

}  // namespace
