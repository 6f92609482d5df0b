#include "maintenance/status_report.h"

#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "cli/tool_context.h"
#include "recorder/recorder_places.h"
#include "store/row_bound.h"
#include "store/row_count.h"
#include "store/sql_statement.h"

void DisplayStatus() {
  // The recorder's sql tool formats the table; whatever it prints is the report.
  std::cout.flush();
  std::system((std::string(Recorder::kSqlCommand) + "'select * from status'").c_str());
}

namespace {

// Every table name the list yields, in its order; a NULL name is the empty text.
// The list is read to its end before any table is counted: on some damaged
// stores a count that fails on a corrupt page sends a list stepped meanwhile
// back to a row it already gave, over and over, and the report would never end.
std::vector<std::string> TableNames(SQLStatement& tables) {
  std::vector<std::string> names;
  RowBound bound(toolContext.database);
  while (bound.Step(tables) == kStepRow) {
    const unsigned char* text = sqlite3_column_text(tables.handle, 0);
    names.emplace_back(text == nullptr ? "" : reinterpret_cast<const char*>(text));
  }
  return names;
}

}  // namespace

void DisplayTables() {
  // The table list always comes from the database file, even while the daemon
  // runs; only the counts go to the daemon then.
  SQLStatement tables(toolContext.database,
                      "select tbl_name from sqlite_master where type='table'");
  std::cout << std::endl;
  std::cout << "Table Name  "
            << "  "
            << "Entries" << std::endl;
  std::cout << "============"
            << "  "
            << "=======" << std::endl;
  if (tables.resultCode == SQLITE_OK) {
    for (const std::string& name : TableNames(tables)) {
      const unsigned int count = CountRows(name);
      std::cout << std::left << std::setw(12) << name << "    " << std::right << std::setw(4)
                << count << std::endl;
    }
    // Reported after the rows it followed, as if the counts had run while the
    // list was stepped.
    if (tables.resultCode != kStepDone) {
      std::cerr << "stmt Error: ";
    }
  }
  std::cout << std::endl;
}
