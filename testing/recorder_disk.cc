#include "testing/recorder_disk.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include "testing/scratch_dir.h"

#ifndef DB_SCHEMA_PATH
#error "DB_SCHEMA_PATH must name the store schema"
#endif

namespace {

std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void MakeFolders(const std::string& path) {
  for (size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    mkdir(path.substr(0, slash).c_str(), 0777);
  }
  mkdir(path.c_str(), 0777);
}

}  // namespace

std::string Quote(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) {
    quoted += c;
    if (c == '\'') quoted += c;
  }
  return quoted + "'";
}

RecorderDisk::RecorderDisk(Store store) {
  // Everyone may enter it: the unprivileged runs of the sandbox read it.
  path_ = MakeFolderBelow(TemporaryParent(), "disk", 0755);
  if (path_.empty()) {
    return;
  }
  if (store == Store::kNone) {
    return;
  }
  MakeFolders(path_ + "/streammgr");
  MakeFolders(path_ + "/connectionmgr");
  if (store == Store::kEmptyDatabase) {
    sqlite3* db = nullptr;
    sqlite3_open(StorePath().c_str(), &db);
    sqlite3_exec(db, "pragma user_version=0", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    return;
  }
  Exec(ReadWholeFile(DB_SCHEMA_PATH));
}

RecorderDisk::~RecorderDisk() {
  if (!path_.empty() && std::getenv("DB_KEEP_DISKS") == nullptr) {
    std::system(("chmod -R u+rwX '" + path_ + "' 2>/dev/null; rm -rf '" + path_ + "'").c_str());
  }
}

void RecorderDisk::Exec(const std::string& sql) const {
  sqlite3* db = nullptr;
  if (sqlite3_open(StorePath().c_str(), &db) != SQLITE_OK) {
    ADD_FAILURE() << "cannot open " << StorePath();
    sqlite3_close(db);
    return;
  }
  char* error = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    ADD_FAILURE() << "SQL failed: " << (error ? error : "?") << "\n" << sql.substr(0, 500);
    sqlite3_free(error);
  }
  sqlite3_close(db);
}

void RecorderDisk::WriteFile(const std::string& relative, const std::string& content) const {
  const std::string path = path_ + "/" + relative;
  MakeFolders(path.substr(0, path.rfind('/')));
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
  if (!out) ADD_FAILURE() << "cannot write " << path;
}

std::string RecorderDisk::ReadFile(const std::string& relative) const {
  return ReadWholeFile(path_ + "/" + relative);
}

bool RecorderDisk::Exists(const std::string& relative) const {
  struct stat info;
  return stat((path_ + "/" + relative).c_str(), &info) == 0;
}

std::string RecorderDisk::Dump() const {
  sqlite3* db = nullptr;
  std::ostringstream dump;
  if (sqlite3_open_v2(StorePath().c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    sqlite3_close(db);
    return "<no store>";
  }
  std::vector<std::string> tables;
  sqlite3_stmt* list = nullptr;
  sqlite3_prepare_v2(db, "select name from sqlite_master where type='table' order by name", -1,
                     &list, nullptr);
  while (list != nullptr && sqlite3_step(list) == SQLITE_ROW) {
    tables.push_back(reinterpret_cast<const char*>(sqlite3_column_text(list, 0)));
  }
  sqlite3_finalize(list);
  for (const std::string& table : tables) {
    dump << "table " << table << "\n";
    sqlite3_stmt* rows = nullptr;
    const std::string sql = "select * from \"" + table + "\" order by 1";
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &rows, nullptr) != SQLITE_OK) {
      dump << "  <unreadable>\n";
      continue;
    }
    while (sqlite3_step(rows) == SQLITE_ROW) {
      dump << " ";
      for (int i = 0; i < sqlite3_column_count(rows); ++i) {
        const unsigned char* value = sqlite3_column_text(rows, i);
        dump << " " << sqlite3_column_type(rows, i) << ":"
             << (value ? reinterpret_cast<const char*>(value) : "NULL");
      }
      dump << "\n";
    }
    sqlite3_finalize(rows);
  }
  sqlite3_close(db);
  return dump.str();
}

std::string EventRow::Insert() const {
  std::ostringstream sql;
  sql << "insert into events (reid, state, splitstate, streamstate, locked, confirmed, crcode1, "
         "crcode2, starttick, starttime, exporttime, stoptick, stoptime, description, officerid, "
         "officername, category, vehicle, flagged, background, totalfiles, groupId, part, "
         "totalparts, answers) values ("
      << Quote(reid) << ", " << state << ", " << splitState << ", 0, 0, 0, " << crCode1 << ", "
      << crCode2 << ", " << startTick << ", " << startTime << ", " << exportTime << ", " << stopTick
      << ", " << stopTime << ", '', 7, 'Officer', '', 'Unit 7', 0, " << background << ", "
      << totalFiles << ", " << Quote(groupId) << ", " << part << ", " << totalParts << ", "
      << (answers.empty() ? "NULL" : Quote(answers)) << ");\n";
  return sql.str();
}

std::string FileRow::Insert() const {
  std::ostringstream sql;
  sql << "insert into streamfiles (number, stream, state, starttick, stoptick, starttime, "
         "stoptime, previous, next, size, type) values ("
      << number << ", " << stream << ", " << state << ", " << startTick << ", " << stopTick << ", "
      << startTime << ", " << stopTime << ", " << previous << ", " << next << ", " << size << ", "
      << type << ");\n";
  return sql.str();
}
