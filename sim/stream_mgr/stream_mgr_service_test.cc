// The StreamMgr simulator's answers, served by the real daemon loop on a
// thread of the test and asked through the real client requests.
#include "sim/stream_mgr/stream_mgr_service.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"
#include "recorder/host/served_daemon.h"
#include "recorder/stream_db.h"
#include "recorder/stream_mgr_api.h"
#include "store/sql_statement.h"
#include "testing/recorder_disk.h"
#include "testing/sim_command_line.h"
#include "testing/sim_named_cases.h"

namespace {

using StreamMgrApi::EventRecordListMessage;
using StreamMgrApi::StreamfileRecordListMessage;

std::string Failed(bool leftSomething) { return leftSomething ? "failed, but answered" : "failed"; }

// How many rows a listing of `sql` answered, and whether they are those the
// tool's direct path loads with `load`; or how it failed.
template <typename Item>
std::string Listed(const RecorderDisk& disk, const std::string& sql, bool ok,
                   const std::vector<Item>& items, Item (*load)(SQLStatement&),
                   std::string (*encode)(const std::vector<Item>&)) {
  if (!ok) return Failed(!items.empty());
  sqlite3* database = nullptr;
  sqlite3_open(disk.StorePath().c_str(), &database);
  std::vector<Item> direct;
  {
    SQLStatement statement(database, sql);
    while (statement.Step() == kStepRow) direct.push_back(load(statement));
  }
  sqlite3_close(database);
  return std::to_string(items.size()) + (encode(items) == encode(direct)
                                             ? " rows, as read directly"
                                             : " rows, NOT as read directly");
}

// The store as a whole, to tell whether a session changed it.
std::string Snapshot(const RecorderDisk& disk) {
  if (!disk.Exists("streammgr/stream.db")) return "missing";
  const std::string bytes = disk.ReadFile("streammgr/stream.db");
  return bytes.rfind("SQLite format 3", 0) == 0 ? disk.Dump() : bytes;
}

// A store, the simulator serving it, and a client endpoint connected to it.
class Served {
 public:
  explicit Served(const RecorderDisk& disk, StreamMgrOptions options = StreamMgrOptions())
      : disk_(disk),
        database_(OpenOwnedStore(disk.StorePath())),
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

  // Asks each request of `session`, one a line as "KIND TEXT -> ANSWER", and
  // writes the answers got in the same form. KIND is events or files (how
  // many rows, and whether they are those of the direct path), count,
  // delete, live (a file's live size), store (whether it is as it was when
  // the session began) or stop (how the daemon ended).
  std::string Session(const std::string& session) {
    before_ = Snapshot(disk_);
    std::istringstream lines(session);
    std::string answers;
    for (std::string line; std::getline(lines, line);) {
      const size_t space = line.find(' '), arrow = line.rfind(" -> ");
      const std::string kind = line.substr(0, space);
      const std::string text = space < arrow ? line.substr(space + 1, arrow - space - 1) : "";
      answers += kind + (space < arrow ? " " + text : "") + " -> " + Answer(kind, text) + "\n";
    }
    return answers;
  }

  std::string Answer(const std::string& kind, const std::string& text) {
    if (kind == "events") {
      EventRecordListMessage list;
      const bool ok = StreamMgrApi::GetEventsFromSqlStatement(ipc, text, list, 30000);
      return Listed(disk_, text, ok, list.items, StreamDB::LoadEventInfoFromStatement,
                    HostIpc::EventsAnswer);
    }
    if (kind == "files") {
      StreamfileRecordListMessage list;
      const bool ok = StreamMgrApi::GetFilesFromSqlStatement(ipc, text, list, 5000);
      return Listed(disk_, text, ok, list.items, StreamDB::LoadFileInfoFromStatement,
                    HostIpc::FilesAnswer);
    }
    if (kind == "count") {
      unsigned int count = 99;
      return StreamMgrApi::GetCountFromSqlStatement(ipc, text, count, 5000) ? std::to_string(count)
                                                                            : Failed(count != 99);
    }
    if (kind == "delete") return StreamMgrApi::DeleteEvent(text, ipc) ? "deleted" : "not deleted";
    if (kind == "live") {
      std::string answer;
      uint32_t size = 7;
      const bool ok =
          HostIpc::ExchangeOnce(daemon_.Path(), HostIpc::LiveSizeRequest(std::stoul(text)), answer,
                                5000) &&
          HostIpc::DecodeLiveSizeAnswer(answer, size);
      return ok ? std::to_string(size) : Failed(size != 7);
    }
    if (kind == "store") {
      const std::string now = Snapshot(disk_);
      return now == "missing" ? now : now == before_ ? "unchanged" : "changed";
    }
    if (kind == "stop") return daemon_.Stop() == HostIpc::ServeEnd::kDied ? "died" : "stopped";
    return "";
  }

  std::string Path() const { return daemon_.Path(); }

  LinxIpc ipc{"test"};

 private:
  const RecorderDisk& disk_;
  std::string before_;  // the store when the session began
  sqlite3* database_;
  StreamMgrService service_;
  HostIpc::ServedDaemon daemon_;
};

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

void FillEvents(const RecorderDisk& disk) {
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 2500) "
      "insert into events (reid, starttick, groupId) select printf('R%05d', i), i, '' from n;");
}

void HugeEvents(const RecorderDisk& disk) {
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 34) "
      "insert into events (reid, description) "
      "select 'r' || i, replace(hex(zeroblob(524288)), '0', 'x') from n;");
}
void EarlierLog(const RecorderDisk& disk) { disk.WriteFile("requests.log", "earlier\n"); }
void NoStore(const RecorderDisk& disk) { std::filesystem::remove_all(disk.Path() + "/streammgr"); }
void NotADatabase(const RecorderDisk& disk) {
  disk.WriteFile("streammgr/stream.db", std::string(4096, 'x'));
}

// A session with the simulator started with the words of `options` on a
// store filled by `fill` (when given), and what it logged to requests.log
// (when `log` is given).
struct Case {
  const char* name;
  void (*fill)(const RecorderDisk&);
  const char* options;
  std::string session;
  const char* log = nullptr;
};

const Case kCases[] = {
    {"EventsAreTheRecordsOfTheDirectPath", FillStore, "",
     "events select * from events -> 3 rows, as read directly\n"
     "events select * from events order by reid desc -> 3 rows, as read directly\n"
     "events select * from events where reid='a' -> 1 rows, as read directly\n"
     "events select * from events where 0 -> 0 rows, as read directly\n"},
    {"FilesAreTheRecordsOfTheDirectPath", FillStore, "",
     "files select * from streamfiles -> 3 rows, as read directly\n"
     "files select * from streamfiles order by number desc limit 2 -> 2 rows, as read directly\n"
     "files select * from streamfiles limit 1000 offset 2 -> 1 rows, as read directly\n"
     "files select * from streamfiles where 0 -> 0 rows, as read directly\n"},
    // The last value is cut to 32 bits.
    {"CountIsColumnZeroOfTheFirstRow", FillStore, "",
     "count select count(*) from events -> 3\n"
     "count select count(*) from status -> 1\n"
     "count select 7, 8 union all select 9, 10 -> 7\n"
     "count select 1 where 0 -> failed\n"
     "count select 4294967297 -> 1\n"},
    {"OnlyTheFirstStatementOfTheTextRuns", FillStore, "",
     "count select count(*) from events; delete from events -> 3\n"
     "events select * from events where reid='a'; drop table events -> 1 rows, as read directly\n"
     "store -> unchanged\n"},
    // The last request shows that the connection is fine.
    {"TextThatDoesNotPrepareIsAFailedRequest", FillStore, "",
     "events select * from nosuch -> failed\n"
     "files  -> failed\n"
     "count select count(*) from -> failed\n"
     "count select count(*) from events -> 3\n"},
    // The overflow strikes at the second row, after one row was loaded.
    {"StepErrorIsAFailedRequestNotAPartialList", FillStore, "",
     "events select * from events where case when reid='a' then 1 else abs(-9223372036854775807 - 1) end order by reid -> failed\n"
     "count select abs(-9223372036854775807 - 1) -> failed\n"},
    // 34 descriptions of 1 MiB are more than one frame may hold; 31 fit, and
    // the connection is still good.
    {"AnswerTooBigForOneFrameIsAFailedRequest", HugeEvents, "",
     "events select * from events -> failed\n"
     "events select * from events where reid not in ('r1', 'r2', 'r3') -> 31 rows, as read directly\n"},
    // Neither a row gone already nor a groupId is a reid.
    {"DeleteRemovesOneEventRow", FillStore, "",
     "delete b'quote -> deleted\n"
     "delete b'quote -> not deleted\n"
     "delete g -> not deleted\n"
     "delete ' or 1=1 -- -> not deleted\n"
     "count select count(*) from events -> 2\n"
     "count select count(*) from events where reid in ('a', 'c \xc3\xa9') -> 2\n"},
    {"RefusedDeleteDeletesNothing", FillStore, "--refuse-delete a --refuse-delete b'quote",
     "delete a -> not deleted\n"
     "delete b'quote -> not deleted\n"
     "store -> unchanged\n"
     "delete c \xc3\xa9 -> deleted\n"
     "store -> changed\n"},
    {"FailingRequestsAnswerNothingAndChangeNothing", FillStore, "--fail-requests",
     "events select * from events -> failed\n"
     "files select * from streamfiles -> failed\n"
     "count select count(*) from events -> failed\n"
     "delete a -> not deleted\n"
     "store -> unchanged\n"},
    {"GarbageAnswersFailEveryRequest", FillStore, "--garbage",
     "events select * from events -> failed\n"
     "files select * from streamfiles -> failed\n"
     "count select count(*) from events -> failed\n"
     "delete a -> not deleted\n"
     "live 1 -> failed\n"
     "store -> unchanged\n"},
    // Live sizes are not among the counted requests.
    {"DiesWhenTheRequestAfterTheLastAllowedArrives", FillStore, "--die-after 2",
     "count select 1 -> 1\n"
     "live 1 -> 98566144\n"
     "count select 2 -> 2\n"
     "count select 3 -> failed\n"
     "stop -> died\n"},
    {"DieAfterZeroAnswersNothing", FillStore, "--die-after 0",
     "delete a -> not deleted\n"
     "stop -> died\n"
     "store -> unchanged\n"},
    {"LogHasOneLinePerRequestReceived", FillStore, "--refuse-delete a",
     "events select * from events -> 3 rows, as read directly\n"
     "files select * from nosuch -> failed\n"
     "count select count(*) from status -> 1\n"
     "delete a -> not deleted\n"
     "delete b'quote -> deleted\n"
     "live 2 -> 4294967295\n",
     "events\tselect * from events\n"
     "files\tselect * from nosuch\n"
     "count\tselect count(*) from status\n"
     "delete\ta\n"
     "delete\tb'quote\n"},
    {"LogIsAppendedTo", EarlierLog, "", "count select count(*) from events -> 0\n",
     "earlier\ncount\tselect count(*) from events\n"},
    {"FailingAndDyingRequestsAreLoggedToo", nullptr, "--fail-requests --die-after 1",
     "count select 1 -> failed\n"
     "count select 2 -> failed\n",
     "count\tselect 1\ncount\tselect 2\n"},
    // A stored -1 reads as unsigned; 99 is given, though the store has no
    // such file.
    {"LiveSizeIsTheGivenOneOrTheStoredOne", FillStore,
     "--live-size 3=12345 --live-size 4294967295=1 --live-size 99=0",
     "live 3 -> 12345\n"
     "live 1 -> 98566144\n"
     "live 2 -> 4294967295\n"
     "live 99 -> 0\n"
     "live 5 -> failed\n"},
    {
        "MissingStoreFailsEveryQueryAndIsNotCreated",
        NoStore,
        "",
        "events select * from events -> failed\n"
        "files select * from streamfiles -> failed\n"
        "count select count(*) from events -> failed\n"
        "delete a -> not deleted\n"
        "live 1 -> failed\n"
        "store -> missing\n",
    },
    {
        "StoreThatIsNotADatabaseFailsEveryQuery",
        NotADatabase,
        "",
        "count select count(*) from events -> failed\n"
        "delete a -> not deleted\n"
        "store -> unchanged\n",
    },
    // The rows move up under the next page: it must see them where they are
    // now. Then pages are asked again from the start, and out of order.
    {"PageAfterAnotherRequestIsRunAfresh", FillEvents, "",
     "events select * from events limit 1000 offset 0 -> 1000 rows, as read directly\n"
     "delete R00005 -> deleted\n"
     "events select * from events limit 1000 offset 1000 -> 1000 rows, as read directly\n"
     "count select count(*) from events -> 2499\n"
     "events select * from events limit 1000 offset 2000 -> 499 rows, as read directly\n"
     "events select * from events limit 1000 offset 0 -> 1000 rows, as read directly\n"
     "events select * from events limit 1000 offset 2000 -> 499 rows, as read directly\n"
     "events select * from events limit 1000 offset 1000 -> 1000 rows, as read directly\n"},
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

class StreamMgrSession : public ::testing::TestWithParam<Case> {};

TEST_P(StreamMgrSession, AnswersAsWritten) {
  const Case& c = GetParam();
  RecorderDisk disk;
  if (c.fill != nullptr) c.fill(disk);
  std::istringstream text(c.options);
  const std::vector<std::string> words{std::istream_iterator<std::string>(text), {}};
  StreamMgrOptions options;
  std::string error;
  ASSERT_TRUE(ParseWords(ParseStreamMgrOptions, words, options, error)) << error;
  if (c.log != nullptr) options.logPath = disk.Path() + "/requests.log";
  {
    Served served(disk, options);
    EXPECT_EQ(c.session, served.Session(c.session));
  }
  EXPECT_EQ(c.log == nullptr ? "" : c.log,
            disk.Exists("requests.log") ? disk.ReadFile("requests.log") : "");
}

INSTANTIATE_NAMED_CASES(StreamMgrService, StreamMgrSession, kCases);

TEST(StreamMgrService, EventFieldsComeWhole) {
  RecorderDisk disk;
  FillStore(disk);
  Served served(disk);
  EventRecordListMessage list;
  StreamMgrApi::GetEventsFromSqlStatement(served.ipc, "select * from events", list, 5000);
  ASSERT_EQ(3u, list.items.size());
  ASSERT_EQ(2u, list.items[0].answers.entries.size());
  EXPECT_EQ("A2", list.items[0].answers.entries[1].answer.GetValue());
  EXPECT_EQ(-1, list.items[1].startTime.GetValue());
}

TEST(StreamMgrService, SettingsAreNotItsBusiness) {
  RecorderDisk disk;
  Served served(disk);
  std::string answer;
  VideoRecordingSettings settings;
  ASSERT_TRUE(HostIpc::ExchangeOnce(served.Path(), HostIpc::SettingsRequest(), answer, 5000));
  EXPECT_FALSE(HostIpc::DecodeSettingsAnswer(answer, settings));
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
  std::string session;
  for (const auto& [query, rows] : std::vector<std::pair<std::string, int>>{
           {"select * from streamfiles where  number like '%' order by number asc", 2500},
           {"select * from streamfiles where  number like '%' and stream=2 order by number desc",
            625},
           {"select * from streamfiles where  number like '%' order by starttick desc", 2500}}) {
    for (int offset = 0; offset <= 3000; offset += 1000) {
      session += "files " + query + " limit 1000 offset " + std::to_string(offset) + " -> " +
                 std::to_string(std::clamp(rows - offset, 0, 1000)) + " rows, as read directly\n";
    }
  }
  EXPECT_EQ(session, served.Session(session));
}

TEST(StreamMgrService, ClientLeavingAHalfPagedListingLetsWritersIn) {
  RecorderDisk disk;
  FillEvents(disk);
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
  EXPECT_EQ("count select count(*) from events -> 0\n",
            served.Session("count select count(*) from events -> 0\n"));
}

// Serves stream files 1 to 200000 and asks for the 200 pages of 1000 files
// that `text` spells for each offset: every file comes once, in order. How
// long that takes is measured by bench/run, beside the direct path.
struct Paging {
  const char* name;
  std::string (*text)(int offset);
};

const Paging kPagings[] = {
    {"TwoHundredThousandFilesPagedByKeyRange",
     [](int offset) {
       return "select * from streamfiles where number > " + std::to_string(offset) +
              " order by number asc limit 1000";
     }},
    // The tool's own paged texts, which the page cursor answers.
    {"TwoHundredThousandFilesPagedByOffset",
     [](int offset) {
       return "select * from streamfiles where  number like '%' order by number asc limit 1000 offset " +
              std::to_string(offset);
     }},
};

void PrintTo(const Paging& c, std::ostream* out) { *out << c.name; }

class StreamMgrPaging : public ::testing::TestWithParam<Paging> {};

TEST_P(StreamMgrPaging, EveryFileOnceInOrder) {
  const auto text = GetParam().text;
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
    ASSERT_EQ(1000u, page.items.size()) << text(offset);
    for (const StreamMgrApi::StreamfileRecordItem& file : page.items) {
      ASSERT_EQ(next++, file.number.GetValue()) << text(offset);
    }
  }
  StreamfileRecordListMessage after;
  EXPECT_TRUE(StreamMgrApi::GetFilesFromSqlStatement(served.ipc, text(200000), after, 60000));
  EXPECT_TRUE(after.items.empty());
}

INSTANTIATE_NAMED_CASES(StreamMgrService, StreamMgrPaging, kPagings);

}  // namespace
