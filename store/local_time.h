// Local date and time of a moment, exactly as localtime_r gives it, but
// mostly without calling it. Listings convert two or three times a row, and
// consecutive rows mostly fall in the same hour; localtime_r looks the zone's
// rules up afresh every time. Within an hour that holds no change of the
// zone's offset (a DST switch or any other), local time runs at a fixed
// distance from the moment, so the last few hours converted are remembered
// with that distance and the fields are derived from it.
#ifndef STORE_LOCAL_TIME_H_
#define STORE_LOCAL_TIME_H_

#include <ctime>

// The fields of struct tm that the tables print, with tm's meanings.
struct LocalTime {
  int year = 0;    // years since 1900
  int month = 0;   // 0 to 11
  int day = 0;     // 1 to 31
  int hour = 0;    // 0 to 23
  int minute = 0;  // 0 to 59
  int second = 0;  // 0 to 60 (60 in a zone that counts leap seconds)

  bool operator==(const LocalTime& other) const {
    return year == other.year && month == other.month && day == other.day && hour == other.hour &&
           minute == other.minute && second == other.second;
  }
};

// localtime_r's answer; false when it has none (a year that does not fit).
bool PlainLocalTimeOf(time_t seconds, LocalTime& out);

// The same answer, derived from one of the hours converted last when
// `seconds` falls in it. A change of TZ (set, changed or unset) makes the next conversion ask
// localtime_r again, so the answers stay localtime_r's as long as tzset is
// called right after the change, as any change of zone must be followed for
// localtime_r itself to see it. The tool never changes TZ.
bool LocalTimeOf(time_t seconds, LocalTime& out);

#endif  // STORE_LOCAL_TIME_H_
