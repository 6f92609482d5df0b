// Writes a recorder disk of a chosen size for benchmarks: the store made from
// the schema, stream files chained per stream, events in split groups, and
// the metadata files of staged events. A fixed seed makes every run the same.
//
//   make_store DIR [--files N] [--events N] [--groups N] [--staged PERCENT]
//                  [--extra-tables N] [--extra-rows N]
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace {

struct Settings {
  std::string disk;
  long files = 0;
  long events = 0;
  long groups = 0;
  int stagedPercent = 0;
  int extraTables = 0;
  long extraRows = 0;
};

// A small deterministic generator, so two runs build the same disk.
uint32_t Next(uint64_t& state) {
  state = state * 6364136223846793005ULL + 1442695040888963407ULL;
  return static_cast<uint32_t>(state >> 33);
}

bool Exec(sqlite3* db, const std::string& sql) {
  char* error = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    std::fprintf(stderr, "make_store: %s\n", error ? error : "?");
    sqlite3_free(error);
    return false;
  }
  return true;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void WriteFiles(sqlite3* db, long count, uint64_t& seed) {
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(db, "insert into streamfiles values (?,?,?,?,?,?,?,?,?,?,?)", -1, &insert,
                     nullptr);
  long lastOfStream[4] = {0, 0, 0, 0};
  const long base = 1704164645;
  for (long number = 1; number <= count; ++number) {
    const int stream = static_cast<int>(number % 4);
    const long previous = lastOfStream[stream];
    const long next = number + 4 <= count ? number + 4 : 0;
    const long startTick = number * 600 + Next(seed) % 100;
    sqlite3_bind_int64(insert, 1, number);
    sqlite3_bind_int64(insert, 2, stream);
    sqlite3_bind_int64(insert, 3, Next(seed) % 4);
    sqlite3_bind_int64(insert, 4, startTick);
    sqlite3_bind_int64(insert, 5, startTick + 600);
    sqlite3_bind_int64(insert, 6, base + number * 300);
    sqlite3_bind_int64(insert, 7, base + number * 300 + 300);
    sqlite3_bind_int64(insert, 8, previous);
    sqlite3_bind_int64(insert, 9, next);
    sqlite3_bind_int64(insert, 10, 98566144 - (Next(seed) % 1000) * 4096);
    sqlite3_bind_int64(insert, 11, Next(seed) % 3);
    sqlite3_step(insert);
    sqlite3_reset(insert);
    lastOfStream[stream] = number;
  }
  sqlite3_finalize(insert);
}

void Stage(const Settings& s, const std::string& reid, uint64_t& seed) {
  const std::string base = s.disk + "/connectionmgr/" + reid;
  std::ofstream xml(base + ".xml");
  xml << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<recording-event>\n <video>\n  <streams>\n"
         "   <stream>\n    <segment name=\"a.ts\" src=\""
      << Next(seed) % 1000 << "\" start-offset=\"" << Next(seed) % 1000000
      << "\"/>\n    <segment name=\"b.ts\" src=\"" << Next(seed) % 1000 << "\" stop-offset=\""
      << 1000000 + Next(seed) % 90000000 << "\"/>\n   </stream>\n  </streams>\n </video>\n"
      << "</recording-event>\n";
  std::ofstream mtd(base + ".mtd");
  mtd << std::string(512 + Next(seed) % 512, 'm');
}

void WriteEvents(sqlite3* db, const Settings& s, uint64_t& seed) {
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(db,
                     "insert into events values "
                     "(?,?,?,0,0,0,?,?,?,?,?,?,?,'',7,'Officer','', 'Unit 7',0,?,?,?,?,?,NULL)",
                     -1, &insert, nullptr);
  const long perGroup = s.groups > 0 ? (s.events + s.groups - 1) / s.groups : 0;
  const long base = 1704164645;
  long tick = 1000;
  for (long i = 0; i < s.events; ++i) {
    char reid[32];
    std::snprintf(reid, sizeof reid, "R%08ld", i + 1);
    const long group = perGroup > 0 ? i / perGroup : -1;
    const long part = perGroup > 0 ? i % perGroup + 1 : 0;
    char groupId[32] = "";
    if (group >= 0) std::snprintf(groupId, sizeof groupId, "G%06ld", group);
    const long length = 600 + Next(seed) % 600;
    const long startTick = part > 1 ? tick - 4 : tick + 100;
    const long totalParts = perGroup > 0 ? std::min(perGroup, s.events - group * perGroup) : 0;
    sqlite3_bind_text(insert, 1, reid, -1, SQLITE_TRANSIENT);
    sqlite3_bind_int(insert, 2, static_cast<int>(Next(seed) % 4));
    sqlite3_bind_int(insert, 3, perGroup > 0 ? 3 : static_cast<int>(Next(seed) % 3));
    sqlite3_bind_int(insert, 4, static_cast<int>(Next(seed) % 4));
    sqlite3_bind_int(insert, 5, static_cast<int>(Next(seed) % 4));
    sqlite3_bind_int64(insert, 6, startTick);
    sqlite3_bind_int64(insert, 7, base + startTick / 2);
    sqlite3_bind_int64(insert, 8, Next(seed) % 2 ? base + startTick / 2 + 3600 : 0);
    sqlite3_bind_int64(insert, 9, startTick + length);
    sqlite3_bind_int64(insert, 10, base + (startTick + length) / 2);
    sqlite3_bind_int(insert, 11, static_cast<int>(Next(seed) % 2));
    sqlite3_bind_int(insert, 12, 1 + static_cast<int>(Next(seed) % 3));
    sqlite3_bind_text(insert, 13, groupId, -1, SQLITE_TRANSIENT);
    sqlite3_bind_int64(insert, 14, part);
    sqlite3_bind_int64(insert, 15, totalParts);
    sqlite3_step(insert);
    sqlite3_reset(insert);
    tick = startTick + length;
    if (static_cast<int>(Next(seed) % 100) < s.stagedPercent) Stage(s, reid, seed);
  }
  sqlite3_finalize(insert);
}

void WriteExtraTables(sqlite3* db, const Settings& s) {
  for (int t = 1; t <= s.extraTables; ++t) {
    const std::string name = "extra" + std::to_string(t);
    Exec(db, "create table " + name + " (id integer primary key, value text)");
    Exec(db, "with recursive n(i) as (select 1 union all select i + 1 from n where i < " +
                 std::to_string(s.extraRows) + ") insert into " + name +
                 " select i, 'value ' || i from n");
  }
}

bool Parse(int argc, char** argv, Settings& s) {
  if (argc < 2) return false;
  s.disk = argv[1];
  for (int i = 2; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    const long value = std::strtol(argv[i + 1], nullptr, 10);
    if (option == "--files")
      s.files = value;
    else if (option == "--events")
      s.events = value;
    else if (option == "--groups")
      s.groups = value;
    else if (option == "--staged")
      s.stagedPercent = static_cast<int>(value);
    else if (option == "--extra-tables")
      s.extraTables = static_cast<int>(value);
    else if (option == "--extra-rows")
      s.extraRows = value;
    else
      return false;
  }
  return argc % 2 == 0;
}

}  // namespace

int main(int argc, char** argv) {
  Settings s;
  if (!Parse(argc, argv, s)) {
    std::fprintf(
        stderr,
        "usage: make_store DIR [--files N] [--events N] [--groups N] [--staged PERCENT] [--extra-tables N] [--extra-rows N]\n");
    return 2;
  }
  std::system(("rm -rf '" + s.disk + "'").c_str());
  mkdir(s.disk.c_str(), 0755);
  mkdir((s.disk + "/streammgr").c_str(), 0755);
  mkdir((s.disk + "/connectionmgr").c_str(), 0755);
  sqlite3* db = nullptr;
  if (sqlite3_open((s.disk + "/streammgr/stream.db").c_str(), &db) != SQLITE_OK) return 1;
  uint64_t seed = 20240102;
  const bool ok = Exec(db, ReadFile(DB_SCHEMA_PATH)) && Exec(db, "begin") &&
                  Exec(db, "insert into status values ('version', 'bench')");
  if (!ok) return 1;
  WriteFiles(db, s.files, seed);
  WriteEvents(db, s, seed);
  WriteExtraTables(db, s);
  Exec(db, "commit");
  sqlite3_close(db);
  return 0;
}
