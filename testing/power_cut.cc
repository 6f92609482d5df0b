#include "testing/power_cut.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

namespace {

std::string Contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// Runs in a child of its own: SQLite's locks belong to the process, and the
// child ends without closing anything, as a writer does when the power goes.
[[noreturn]] void WriteAndDie(const std::string& path) {
  sqlite3* db = nullptr;
  int status = 1;
  if (sqlite3_open(path.c_str(), &db) == SQLITE_OK &&
      sqlite3_exec(db,
                   "pragma cache_size = 10;"
                   "begin;"
                   "delete from events;"
                   "delete from streamfiles;"
                   "with recursive n(i) as (select 1 union all select i + 1 from n where i < 3000)"
                   " insert into events (reid, description)"
                   " select 'power-cut-' || i, hex(zeroblob(500)) from n;",
                   nullptr, nullptr, nullptr) == SQLITE_OK) {
    status = 0;
  }
  _exit(status);
}

}  // namespace

bool LeaveHotJournal(const std::string& path) {
  const std::string before = Contents(path);
  const pid_t writer = fork();
  if (writer == 0) WriteAndDie(path);
  int status = 0;
  if (writer < 0 || waitpid(writer, &status, 0) != writer || !WIFEXITED(status) ||
      WEXITSTATUS(status) != 0) {
    ADD_FAILURE() << "the writer of " << path << " failed";
    return false;
  }
  struct stat journal;
  if (stat((path + "-journal").c_str(), &journal) != 0 || journal.st_size == 0) {
    ADD_FAILURE() << "no rollback journal beside " << path;
    return false;
  }
  if (Contents(path) == before) {
    ADD_FAILURE() << "the writer changed nothing in " << path << " itself";
    return false;
  }
  return true;
}
