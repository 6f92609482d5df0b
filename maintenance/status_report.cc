#include "maintenance/status_report.h"

#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <string>

#include "cli/tool_context.h"
#include "recorder/recorder_places.h"
#include "store/row_count.h"
#include "store/sql_statement.h"

void DisplayStatus() {
  // The recorder's sql tool formats the table; whatever it prints is the report.
  std::cout.flush();
  std::system((std::string(Recorder::kSqlCommand) + "'select * from status'").c_str());
}

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
    while (tables.Step() == kStepRow) {
      const unsigned char* text = sqlite3_column_text(tables.handle, 0);
      const std::string name = text == nullptr ? "" : reinterpret_cast<const char*>(text);
      const unsigned int count = CountRows(name);
      std::cout << std::left << std::setw(12) << name << "    " << std::right << std::setw(4)
                << count << std::endl;
    }
    if (tables.resultCode != kStepDone) {
      std::cerr << "stmt Error: ";
    }
  }
  std::cout << std::endl;
}
