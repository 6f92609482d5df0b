#include "store/local_time.h"
#include "testing/time_zone.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <set>
#include <string>
#include <tuple>

namespace {

// Each test may set TZ; the zone of the run comes back after it.
class LocalTimeTest : public ::testing::Test {
  TimeZone restored_;
};

// The fields of `t` as struct tm holds them, or "none".
std::string Text(bool found, const LocalTime& t) {
  return found ? ::testing::PrintToString(
                     std::make_tuple(t.year, t.month, t.day, t.hour, t.minute, t.second))
               : "none";
}

// The derived answer is localtime_r's, or both have none.
::testing::AssertionResult SameAsPlain(int64_t seconds) {
  LocalTime plain, fast;
  const bool plainFound = PlainLocalTimeOf(static_cast<time_t>(seconds), plain);
  const bool fastFound = LocalTimeOf(static_cast<time_t>(seconds), fast);
  if (plainFound == fastFound && (!plainFound || plain == fast)) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure()
         << seconds << ": " << Text(fastFound, fast) << ", plain " << Text(plainFound, plain);
}

// SameAsPlain every `step` seconds from `from` on, short of `to`, either way.
::testing::AssertionResult SameAsPlainFrom(int64_t from, int64_t to, int64_t step) {
  for (int64_t s = from; step > 0 ? s < to : s > to; s += step) {
    if (!SameAsPlain(s)) return SameAsPlain(s);
  }
  return ::testing::AssertionSuccess();
}

// The offset from UTC in force at `seconds`.
long Offset(int64_t seconds) {
  const time_t moment = static_cast<time_t>(seconds);
  struct tm local;
  return localtime_r(&moment, &local) == nullptr ? 0 : local.tm_gmtoff;
}

// Zones with summer time on either side of the year, half-hour and odd
// offsets, a summer time of half an hour, a negative summer time, one whose
// summer time pauses for a month (Ramadan), and the rules of a TZ string.
const char* const kZones[] = {
    "Europe/Berlin",          "America/New_York", "Australia/Sydney",
    "Australia/Lord_Howe",    "Asia/Kolkata",     "America/St_Johns",
    "Pacific/Chatham",        "Europe/Dublin",    "Africa/Casablanca",
    "Asia/Kathmandu",         "Europe/Amsterdam", "America/Santiago",
    "EST5EDT,M3.2.0,M11.1.0", "<+1345>-13:45",    "UTC",
};
const std::set<std::string> kWithoutSwitches = {"UTC", "<+1345>-13:45", "Asia/Kolkata",
                                                "Asia/Kathmandu"};

// Rows five minutes apart, as a listing shows them, each with times of other
// hours beside, across a week on each side of the switches of 2023 and 2024,
// and every second around each switch.
TEST_F(LocalTimeTest, RowsAcrossSwitchesInZonesWithThem) {
  for (const char* zone : kZones) {
    TimeZone::Set(zone);
    const int64_t from = 1672531200;  // 2023-01-01 UTC
    const int64_t to = 1735689600;    // 2025-01-01 UTC
    int switches = 0;
    for (int64_t hour = from; hour < to; hour += 3600) {
      if (Offset(hour) == Offset(hour + 3600)) continue;
      ++switches;
      // Find the switch to the second.
      int64_t before = hour, after = hour + 3600;
      while (after - before > 1) {
        const int64_t middle = before + (after - before) / 2;
        (Offset(middle) == Offset(hour) ? before : after) = middle;
      }
      for (int64_t s = after - 7 * 86400; s < after + 7 * 86400; s += 300) {
        ASSERT_TRUE(SameAsPlain(s)) << zone;
        ASSERT_TRUE(SameAsPlain(s + 300)) << zone;    // the stop time of the row
        ASSERT_TRUE(SameAsPlain(s + 3600)) << zone;   // an export an hour later
        ASSERT_TRUE(SameAsPlain(s - 86400)) << zone;  // and one from the day before
      }
      ASSERT_TRUE(SameAsPlainFrom(after - 7200, after + 7200, 1)) << zone;
      ASSERT_TRUE(SameAsPlainFrom(after + 7200, after - 7200, -1)) << zone;
    }
    EXPECT_GE(switches, kWithoutSwitches.count(zone) ? 0 : 2) << zone;
  }
}

// Every few hours from 1900 to 2040, forwards and backwards, in every zone:
// switches of the past included, and zones that changed their standard time.
TEST_F(LocalTimeTest, CenturiesOfMomentsInEveryZone) {
  for (const char* zone : kZones) {
    TimeZone::Set(zone);
    const int64_t from = -2208988800;  // 1900-01-01 UTC
    const int64_t to = 2208988800;     // 2040
    for (int64_t s = from; s < to; s += 11 * 3600 + 1199) {
      ASSERT_TRUE(SameAsPlain(s)) << zone;
      ASSERT_TRUE(SameAsPlain(s + 1800)) << zone;  // in the hour just converted, or the next
    }
    ASSERT_TRUE(SameAsPlainFrom(to, from, -(17 * 3600 + 7))) << zone;
  }
}

TEST_F(LocalTimeTest, LimitsOf32And64Bits) {
  for (const char* zone : {"UTC", "Europe/Berlin", "America/New_York", "Pacific/Chatham"}) {
    TimeZone::Set(zone);
    for (int64_t limit : {int64_t{INT32_MIN}, int64_t{INT32_MAX}, int64_t{UINT32_MAX}, int64_t{0},
                          INT64_MAX, INT64_MIN, INT64_MAX / 2, INT64_MIN / 2,
                          int64_t{67767976233316800}, int64_t{-67768040609740800}}) {
      for (int step = -3; step <= 3; ++step) {
        // Around the 64-bit limits the steps wrap; localtime_r answers nothing there.
        const int64_t s = static_cast<int64_t>(static_cast<uint64_t>(limit) + step);
        ASSERT_TRUE(SameAsPlain(s)) << zone;
      }
    }
  }
  LocalTime none;
  EXPECT_FALSE(LocalTimeOf(static_cast<time_t>(INT64_MAX), none));
}

// The year's last second and the first of the next, and leap days.
TEST_F(LocalTimeTest, TurnsOfDaysMonthsAndYears) {
  TimeZone::Set("Europe/Berlin");
  for (int64_t s : {int64_t{951782400}, int64_t{946681200}, int64_t{1709164800},
                    int64_t{4107542400}, int64_t{-2203891200}}) {
    ASSERT_TRUE(SameAsPlainFrom(s - 7200, s + 7200, 61));
  }
}

// A change of TZ, followed by tzset, shows at once, also back and forth
// within the same hour, and with TZ unset.
TEST_F(LocalTimeTest, ChangesOfZoneShowAtOnce) {
  const int64_t moment = 1711846800;  // 2024-03-31 01:00 UTC, Berlin switches then
  for (int round = 0; round < 2; ++round) {
    for (const char* zone : {"UTC", "Europe/Berlin", "America/New_York", "<+1345>-13:45",
                             static_cast<const char*>(nullptr), "Europe/Berlin", "UTC"}) {
      TimeZone::Set(zone);
      ASSERT_TRUE(SameAsPlainFrom(moment - 600, moment + 600, 37)) << (zone ? zone : "unset");
    }
  }
  LocalTime utc, berlin;
  TimeZone::Set("UTC");
  ASSERT_TRUE(LocalTimeOf(moment, utc));
  TimeZone::Set("Europe/Berlin");
  ASSERT_TRUE(LocalTimeOf(moment, berlin));
  EXPECT_EQ(std::make_pair(1, 3), std::make_pair(utc.hour, berlin.hour));
}

// However the environment around TZ changes (entries added, removed and
// moved), a new zone shows in the hour converted last.
TEST_F(LocalTimeTest, ChangesOfTheEnvironmentAroundTheZone) {
  const int64_t moment = 1711846800;  // 2024-03-31 01:00 UTC
  const char* const zones[] = {"UTC", "Europe/Berlin", "America/New_York"};
  for (int round = 0; round < 6; ++round) {
    TimeZone::Set(round % 2 == 0 ? nullptr : zones[round % 3]);
    ASSERT_TRUE(SameAsPlain(moment)) << round;
    // Another variable comes and goes, before TZ is set again or anew.
    setenv("DB_LOCAL_TIME_TEST_A", "a", 1);
    setenv("DB_LOCAL_TIME_TEST_B", "b", 1);
    unsetenv("DB_LOCAL_TIME_TEST_A");
    ASSERT_TRUE(SameAsPlain(moment + 1)) << round;
    TimeZone::Set(zones[(round + 1) % 3]);
    ASSERT_TRUE(SameAsPlain(moment + 2)) << round;
    unsetenv("DB_LOCAL_TIME_TEST_B");
    TimeZone::Set(zones[(round + 2) % 3]);
    ASSERT_TRUE(SameAsPlain(moment + 3)) << round;
  }
}

// In a zone that counts leap seconds the 61st second of a minute shows.
TEST_F(LocalTimeTest, LeapSecondsWhereTheZoneCountsThem) {
  TimeZone::Set("right/UTC");
  LocalTime probe;
  ASSERT_TRUE(PlainLocalTimeOf(0, probe));
  // 2016-12-31 23:59:60 is 1483228826 in such a zone; every second around it.
  bool sawLeap = false;
  for (int64_t s = 1483228826 - 4000; s < 1483228826 + 4000; ++s) {
    ASSERT_TRUE(SameAsPlain(s));
    LocalTime t;
    ASSERT_TRUE(LocalTimeOf(static_cast<time_t>(s), t));
    sawLeap = sawLeap || t.second == 60;
  }
  EXPECT_TRUE(sawLeap);
}

}  // namespace
