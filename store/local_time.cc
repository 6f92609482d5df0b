#include "store/local_time.h"

#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kSecondsPerHour = 3600;

// Division rounding towards minus infinity, for moments before 1970.
int64_t FloorDivide(int64_t value, int64_t divisor) {
  const int64_t quotient = value / divisor;
  return quotient * divisor > value ? quotient - 1 : quotient;
}

// Days from 1970-01-01 to the given date of the proleptic Gregorian calendar
// (month 1 to 12), and back; exact over the whole range localtime_r answers.
int64_t DaysFromCivil(int64_t year, int64_t month, int64_t day) {
  year -= month <= 2 ? 1 : 0;
  const int64_t era = FloorDivide(year, 400);
  const int64_t yearOfEra = year - era * 400;
  const int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

struct Date {
  int64_t year;
  int month;  // 1 to 12
  int day;
};

Date CivilFromDays(int64_t days) {
  days += 719468;
  const int64_t era = FloorDivide(days, 146097);
  const int64_t dayOfEra = days - era * 146097;
  const int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int64_t shifted = (5 * dayOfYear + 2) / 153;
  const int day = static_cast<int>(dayOfYear - (153 * shifted + 2) / 5 + 1);
  const int month = static_cast<int>(shifted < 10 ? shifted + 3 : shifted - 9);
  return Date{yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

// Where local time stands from the moment: the zone's offset, and in a zone
// that counts leap seconds their correction too. Read from localtime_r's own
// fields, so it is whatever makes them.
bool LocalDistance(time_t seconds, LocalTime& local, int64_t& distance) {
  if (!PlainLocalTimeOf(seconds, local)) return false;
  const int64_t days = DaysFromCivil(int64_t{local.year} + 1900, local.month + 1, local.day);
  distance = days * kSecondsPerDay + local.hour * kSecondsPerHour + int64_t{local.minute} * 60 +
             local.second - static_cast<int64_t>(seconds);
  return true;
}

// Where TZ stands in the environment. Looking it up with getenv on every
// conversion would cost more than the conversion. setenv, unsetenv and putenv
// replace, move or add entries of `environ`, so the environment is searched
// again only when the entry found last (or, without TZ, the last entry and
// the end after it) is no longer where it was.
class ZoneSetting {
 public:
  // True when TZ has a value other than at the last call.
  bool Changed() {
    if (environ == environment_ && environ != nullptr && environ[index_] == entry_ &&
        (entry_ != nullptr || index_ == 0 || environ[index_ - 1] == lastEntry_)) {
      return false;
    }
    return Find();
  }

 private:
  bool Find() {
    environment_ = environ;
    entry_ = nullptr;
    lastEntry_ = nullptr;
    index_ = 0;
    for (; environ != nullptr && environ[index_] != nullptr; ++index_) {
      if (std::strncmp(environ[index_], "TZ=", 3) == 0) {
        entry_ = environ[index_];
        break;
      }
      lastEntry_ = environ[index_];
    }
    const bool set = entry_ != nullptr;
    const char* const value = set ? entry_ + 3 : "";
    if (set == set_ && value == value_) return false;
    set_ = set;
    value_ = value;
    return true;
  }

  char** environment_ = nullptr;
  size_t index_ = 0;                 // of TZ's entry, or of the end of the environment
  const char* entry_ = nullptr;      // "TZ=..." as found there, or null
  const char* lastEntry_ = nullptr;  // without TZ, the entry before the end
  bool set_ = false;
  std::string value_;
};

// The last few hours converted, and the zone they were converted in. A row
// shows times of more than one hour (an event's export time, a file's stop
// time in the next hour), so each keeps its own hour.
class RecentHours {
 public:
  bool Find(time_t seconds, LocalTime& out) {
    if (zone_.Changed()) {
      for (Hour& hour : hours_) hour.known = false;
    }
    for (const Hour& hour : hours_) {
      if (hour.known && seconds >= hour.first && seconds <= hour.last) {
        FromLocalSeconds(static_cast<int64_t>(seconds) + hour.distance, out);
        return true;
      }
    }
    return Learn(seconds, out);
  }

 private:
  // An hour of moments over which local time runs at a fixed distance.
  struct Hour {
    bool known = false;
    int64_t first = 0;
    int64_t last = 0;
    int64_t distance = 0;
  };
  static constexpr int kHours = 4;

  // Learns the moment's hour, in place of the one learnt longest ago, when
  // local time stands at one distance from its first second to its last: no
  // switch falls inside it then, as no zone switches twice within an hour (in
  // the time zone database, two changes of a zone's offset are days apart;
  // only a hand-written TZ rule with a summer time shorter than an hour would
  // do it). When the hour before or after is known, its distance stands for
  // the near end, so a listing in either order asks localtime_r once an hour.
  // An hour with a switch in it is not learnt: the moment is converted by
  // localtime_r alone.
  bool Learn(time_t seconds, LocalTime& out) {
    // A moment far beyond any year localtime_r answers, or an hour that
    // time_t cannot hold whole, is converted by localtime_r alone.
    constexpr int64_t kFarthest = int64_t{1} << 62;
    if (static_cast<int64_t>(seconds) <= -kFarthest || static_cast<int64_t>(seconds) >= kFarthest) {
      return PlainLocalTimeOf(seconds, out);
    }
    const int64_t first = FloorDivide(seconds, kSecondsPerHour) * kSecondsPerHour;
    const int64_t last = first + kSecondsPerHour - 1;
    if (static_cast<int64_t>(static_cast<time_t>(first)) != first ||
        static_cast<int64_t>(static_cast<time_t>(last)) != last) {
      return PlainLocalTimeOf(seconds, out);
    }
    LocalTime edge;
    int64_t atFirst = 0;
    int64_t atLast = 0;
    bool firstKnown = false;
    bool lastKnown = false;
    for (const Hour& hour : hours_) {
      if (hour.known && hour.last == first - 1) {
        atFirst = hour.distance;
        firstKnown = true;
      } else if (hour.known && hour.first == last + 1) {
        atLast = hour.distance;
        lastKnown = true;
      }
    }
    if ((firstKnown || LocalDistance(static_cast<time_t>(first), edge, atFirst)) &&
        (lastKnown || LocalDistance(static_cast<time_t>(last), edge, atLast)) &&
        atFirst == atLast) {
      hours_[oldest_] = Hour{true, first, last, atFirst};
      oldest_ = (oldest_ + 1) % kHours;
      FromLocalSeconds(static_cast<int64_t>(seconds) + atFirst, out);
      return true;
    }
    return PlainLocalTimeOf(seconds, out);
  }

  void FromLocalSeconds(int64_t local, LocalTime& out) {
    const int64_t days = FloorDivide(local, kSecondsPerDay);
    const int secondOfDay = static_cast<int>(local - days * kSecondsPerDay);
    if (days != day_ || !dayKnown_) {
      date_ = CivilFromDays(days);
      day_ = days;
      dayKnown_ = true;
    }
    out.year = static_cast<int>(date_.year - 1900);
    out.month = date_.month - 1;
    out.day = date_.day;
    out.hour = secondOfDay / 3600;
    out.minute = secondOfDay / 60 % 60;
    out.second = secondOfDay % 60;
  }

  ZoneSetting zone_;
  Hour hours_[kHours];
  int oldest_ = 0;
  // The day last taken apart into a date.
  bool dayKnown_ = false;
  int64_t day_ = 0;
  Date date_{};
};

}  // namespace

bool PlainLocalTimeOf(time_t seconds, LocalTime& out) {
  struct tm local;
  if (localtime_r(&seconds, &local) == nullptr) return false;
  out.year = local.tm_year;
  out.month = local.tm_mon;
  out.day = local.tm_mday;
  out.hour = local.tm_hour;
  out.minute = local.tm_min;
  out.second = local.tm_sec;
  return true;
}

bool LocalTimeOf(time_t seconds, LocalTime& out) {
  thread_local RecentHours recent;
  return recent.Find(seconds, out);
}
