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

std::string Failed(bool leftSomething) { return leftSomething ? "failed, but answered" : "failed"; }

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

  // The live size the simulator reports for a file, or "failed".
  std::string LiveSize(uint32_t number) const {
    std::string answer;
    uint32_t size = 7;
    const bool ok =
        HostIpc::ExchangeOnce(daemon_.Path(), HostIpc::LiveSizeRequest(number), answer, 5000) &&
        HostIpc::DecodeLiveSizeAnswer(answer, size);
    return ok ? std::to_string(size) : Failed(size != 7);
  }
  // The answers to each request, encoded as the direct path's are, or
  // "failed" (with what a failed request wrongly left behind).
  std::string Events(const std::string& sql, int timeoutMs = 5000) {
    EventRecordListMessage list;
    return StreamMgrApi::GetEventsFromSqlStatement(ipc, sql, list, timeoutMs)
               ? HostIpc::EventsAnswer(list.items)
               : Failed(!list.items.empty());
  }
  std::string Files(const std::string& sql) {
    StreamfileRecordListMessage list;
    return StreamMgrApi::GetFilesFromSqlStatement(ipc, sql, list, 5000)
               ? HostIpc::FilesAnswer(list.items)
               : Failed(!list.items.empty());
  }
  std::string Count(const std::string& sql) {
    unsigned int count = 99;
    return StreamMgrApi::GetCountFromSqlStatement(ipc, sql, count, 5000) ? std::to_string(count)
                                                                         : Failed(count != 99);
  }
  bool Delete(const std::string& reid) { return StreamMgrApi::DeleteEvent(reid, ipc); }

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

// Every kind of request fails: empty lists, the count left as it was, no
// delete.
void ExpectEveryRequestFails(Served& served) {
  EXPECT_EQ("failed", served.Events("select * from events"));
  EXPECT_EQ("failed", served.Files("select * from streamfiles"));
  EXPECT_EQ("failed", served.Count("select count(*) from events"));
  EXPECT_FALSE(served.Delete("a"));
}

TEST(StreamMgrService, EventsAreTheRecordsOfTheDirectPath) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  for (const std::string sql :
       {"select * from events", "select * from events order by reid desc",
        "select * from events where reid='a'", "select * from events where 0"}) {
    EXPECT_EQ(DirectEvents(disk, sql), served.Events(sql)) << sql;
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
    EXPECT_EQ(DirectFiles(disk, sql), served.Files(sql)) << sql;
  }
}

TEST(StreamMgrService, CountIsColumnZeroOfTheFirstRow) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  EXPECT_EQ("3", served.Count("select count(*) from events"));
  EXPECT_EQ("1", served.Count("select count(*) from status"));
  EXPECT_EQ("7", served.Count("select 7, 8 union all select 9, 10"));
  EXPECT_EQ("1", served.Count("select 4294967297"));  // cut to 32 bits
  EXPECT_EQ("failed", served.Count("select 1 where 0"));
}

TEST(StreamMgrService, OnlyTheFirstStatementOfTheTextRuns) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  Served served(disk);
  EXPECT_EQ("3", served.Count("select count(*) from events; delete from events"));
  EXPECT_EQ(DirectEvents(disk, "select * from events where reid='a'"),
            served.Events("select * from events where reid='a'; drop table events"));
  EXPECT_EQ(before, disk.Dump());
}

TEST(StreamMgrService, TextThatDoesNotPrepareIsAFailedRequest) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  EXPECT_EQ("failed", served.Events("select * from nosuch"));
  EXPECT_EQ("failed", served.Files(""));
  EXPECT_EQ("failed", served.Count("select count(*) from"));
  EXPECT_EQ("3", served.Count("select count(*) from events"));  // the connection is fine
}

TEST(StreamMgrService, StepErrorIsAFailedRequestNotAPartialList) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  // The overflow strikes at the second row, after one row was loaded.
  EXPECT_EQ("failed", served.Events("select * from events where case when reid='a' then 1 else "
                                    "abs(-9223372036854775807 - 1) end order by reid"));
  EXPECT_EQ("failed", served.Count("select abs(-9223372036854775807 - 1)"));
}

TEST(StreamMgrService, AnswerTooBigForOneFrameIsAFailedRequest) {
  RecorderDisk disk;
  // 34 events with a description of 1 MiB each: more than one frame may hold.
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 34) "
      "insert into events (reid, description) "
      "select 'r' || i, replace(hex(zeroblob(524288)), '0', 'x') from n;");
  Served served(disk);
  EXPECT_EQ("failed", served.Events("select * from events", 30000));
  // 31 of them fit, and the connection is still good.
  const std::string fit = "select * from events where reid not in ('r1', 'r2', 'r3')";
  EXPECT_EQ(DirectEvents(disk, fit), served.Events(fit, 30000));
}

TEST(StreamMgrService, DeleteRemovesOneEventRow) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  EXPECT_TRUE(served.Delete("b'quote"));
  EXPECT_FALSE(served.Delete("b'quote"));  // gone already
  EXPECT_FALSE(served.Delete("g"));        // a groupId is no reid
  EXPECT_FALSE(served.Delete("' or 1=1 --"));
  EXPECT_EQ("2", served.Count("select count(*) from events"));
  EXPECT_EQ("2", served.Count("select count(*) from events where reid in ('a', 'c \xc3\xa9')"));
}

TEST(StreamMgrService, RefusedDeleteDeletesNothing) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  StreamMgrOptions options;
  options.refusedDeletes = {"a", "c \xc3\xa9"};
  {
    Served served(disk, options);
    EXPECT_FALSE(served.Delete("a"));
    EXPECT_FALSE(served.Delete("c \xc3\xa9"));
  }
  EXPECT_EQ(before, disk.Dump());
  {
    Served served(disk, options);
    EXPECT_TRUE(served.Delete("b'quote"));
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
  ExpectEveryRequestFails(served);
  EXPECT_EQ(before, disk.Dump());
}

TEST(StreamMgrService, GarbageAnswersFailEveryRequest) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  StreamMgrOptions options;
  options.garbage = true;
  Served served(disk, options);
  ExpectEveryRequestFails(served);
  EXPECT_EQ("failed", served.LiveSize(1));
  EXPECT_EQ(before, disk.Dump());
}

TEST(StreamMgrService, DiesWhenTheRequestAfterTheLastAllowedArrives) {
  RecorderDisk disk;
  FillStore(disk);
  StreamMgrOptions options;
  options.dieAfterSet = true;
  options.dieAfter = 2;
  Served served(disk, options);
  EXPECT_EQ("1", served.Count("select 1"));
  EXPECT_EQ("98566144", served.LiveSize(1));  // not one of the counted requests
  EXPECT_EQ("2", served.Count("select 2"));
  EXPECT_EQ("failed", served.Count("select 3"));
  EXPECT_EQ(HostIpc::ServeEnd::kDied, served.Stop());
}

TEST(StreamMgrService, DieAfterZeroAnswersNothing) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  StreamMgrOptions options;
  options.dieAfterSet = true;
  Served served(disk, options);
  EXPECT_FALSE(served.Delete("a"));
  EXPECT_EQ(HostIpc::ServeEnd::kDied, served.Stop());
  EXPECT_EQ(before, disk.Dump());
}

// The requests the simulator logged while serving `options` (logging to
// requests.log) on `disk`, asked `ask`.
std::string Logged(const RecorderDisk& disk, StreamMgrOptions options,
                   const std::function<void(Served&)>& ask) {
  options.logPath = disk.Path() + "/requests.log";
  Served served(disk, options);
  ask(served);
  return disk.ReadFile("requests.log");
}

TEST(StreamMgrService, LogHasOneLinePerRequestReceived) {
  RecorderDisk disk;
  FillStore(disk);
  StreamMgrOptions options;
  options.refusedDeletes = {"a"};
  EXPECT_EQ(
      "events\tselect * from events\n"
      "files\tselect * from nosuch\n"
      "count\tselect count(*) from status\n"
      "delete\ta\n"
      "delete\tb'quote\n",
      Logged(disk, options, [](Served& served) {
        served.Events("select * from events");
        served.Files("select * from nosuch");
        served.Count("select count(*) from status");
        served.Delete("a");
        served.Delete("b'quote");
        served.LiveSize(2);
      }));
}

TEST(StreamMgrService, LogIsAppendedTo) {
  RecorderDisk disk;
  disk.WriteFile("requests.log", "earlier\n");
  EXPECT_EQ("earlier\ncount\tselect count(*) from events\n",
            Logged(disk, StreamMgrOptions(),
                   [](Served& served) { served.Count("select count(*) from events"); }));
}

TEST(StreamMgrService, FailingAndDyingRequestsAreLoggedToo) {
  RecorderDisk disk;
  StreamMgrOptions options;
  options.failRequests = true;
  options.dieAfterSet = true;
  options.dieAfter = 1;
  EXPECT_EQ("count\tselect 1\ncount\tselect 2\n", Logged(disk, options, [](Served& served) {
              served.Count("select 1");
              served.Count("select 2");
            }));
}

TEST(StreamMgrService, LiveSizeIsTheGivenOneOrTheStoredOne) {
  RecorderDisk disk;
  FillStore(disk);
  StreamMgrOptions options;
  options.liveSizes = {{3, 12345}, {4294967295u, 1}, {99, 0}};
  Served served(disk, options);
  // A stored -1 reads as unsigned; 99 is given, though the store has no
  // such file.
  std::string sizes;
  for (const uint32_t number : {3, 1, 2, 99, 5}) sizes += served.LiveSize(number) + " ";
  EXPECT_EQ("12345 98566144 4294967295 0 failed ", sizes);
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
  ExpectEveryRequestFails(served);
  EXPECT_EQ("failed", served.LiveSize(1));
  EXPECT_FALSE(disk.Exists("streammgr/stream.db"));
}

TEST(StreamMgrService, StoreThatIsNotADatabaseFailsEveryQuery) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  disk.WriteFile("streammgr/stream.db", std::string(4096, 'x'));
  Served served(disk);
  EXPECT_EQ("failed", served.Count("select count(*) from events"));
  EXPECT_FALSE(served.Delete("a"));
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
      EXPECT_EQ(DirectFiles(disk, sql), served.Files(sql)) << sql;
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
  ASSERT_TRUE(served.Delete("R00005"));
  EXPECT_EQ(1000u, page(1000));
  EXPECT_EQ("2499", served.Count("select count(*) from events"));
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
  EXPECT_EQ("0", served.Count("select count(*) from events"));
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
