// Takes a row of the event listing apart: times each thing DisplayEvent does
// for every event of the store, one kind at a time, and prints the cost per
// row in microseconds. Run it inside the recorder sandbox, with ConfigMP
// started the way the listing is measured:
//
//   recorder-sandbox --configmp=--reexport-hours=24 DISK -- event_row_costs
//
// Standard output of the listing itself goes to /dev/null.
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "cli/tool_context.h"
#include "events/event_table.h"
#include "events/metadata_files.h"
#include "recorder/config_mp_client.h"
#include "recorder/recorder_places.h"
#include "recorder/stream_db.h"
#include "store/sql_statement.h"

namespace {

using StreamMgrApi::EventRecordItem;

std::vector<EventRecordItem> LoadEvents() {
  std::vector<EventRecordItem> events;
  SQLStatement statement(toolContext.database, "select * from events");
  while (statement.prepared && statement.Step() == kStepRow) {
    events.push_back(StreamDB::LoadEventInfoFromStatement(statement));
  }
  return events;
}

// Microseconds per row of `work` done once for each of `rows` rows.
double PerRow(size_t rows, const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double, std::micro> spent = std::chrono::steady_clock::now() - start;
  return rows == 0 ? 0 : spent.count() / static_cast<double>(rows);
}

}  // namespace

int main() {
  if (sqlite3_open_v2(Recorder::kStorePath, &toolContext.database, SQLITE_OPEN_READONLY, nullptr) !=
      SQLITE_OK) {
    std::fprintf(stderr, "event_row_costs: no store at /mnt/hd\n");
    return 1;
  }
  std::vector<EventRecordItem> events;
  const double loading = PerRow(1, [&] { events = LoadEvents(); });
  const size_t rows = events.size();
  size_t staged = 0;
  for (const EventRecordItem& event : events) {
    if (IsStaged(kMetadataDirectory + event.reid.GetValue())) ++staged;
  }
  int answered = 0;
  const double config = PerRow(rows, [&] {
    for (size_t i = 0; i < rows; ++i) {
      ConfigMPClient client(toolContext.ipc, 30);
      VideoRecordingSettings settings;
      answered += client.GetVideoRecordingSettings(settings) == 0;
    }
  });
  const double probes = PerRow(rows, [&] {
    for (const EventRecordItem& event : events) {
      const std::string path = kMetadataDirectory + event.reid.GetValue();
      IsStaged(path);
      IsStaged(path);
    }
  });
  const double sizes = PerRow(rows, [&] {
    for (const EventRecordItem& event : events) {
      if (IsStaged(kMetadataDirectory + event.reid.GetValue())) EventSize(event.reid.GetValue());
    }
  });
  // The whole row, printed to /dev/null with its flush, as the listing does.
  std::cout.flush();
  const int null = open("/dev/null", O_WRONLY);
  const int saved = dup(1);
  dup2(null, 1);
  const double rowsPrinted = PerRow(rows, [&] {
    for (const EventRecordItem& event : events) DisplayEvent(event, 0);
  });
  std::cout.flush();
  dup2(saved, 1);
  std::printf("events %zu, staged %zu, settings answered %d\n", rows, staged, answered);
  std::printf("load all rows (select * and the row loader): %8.1f us per row\n",
              loading / static_cast<double>(rows == 0 ? 1 : rows));
  std::printf("configuration request (kept connection):       %8.1f us per row\n", config);
  std::printf("two staged probes (IsStaged twice):            %8.1f us per row\n", probes);
  std::printf("size of staged events (probe, stat, XML):      %8.1f us per row\n", sizes);
  std::printf("whole row (DisplayEvent, flushed to /dev/null): %7.1f us per row\n", rowsPrinted);
  return 0;
}
