#include "store/time_text.h"
#include "testing/time_zone.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>
#include <tuple>

namespace {

std::string Strftime(time_t seconds, const char* format) {
  char text[kTimeTextBytes] = "";
  const struct tm* local = std::localtime(&seconds);
  if (local == nullptr) return std::string();
  return std::string(text, std::strftime(text, sizeof text, format, local));
}

// What `write` writes for `seconds`, checked to end where its length says.
std::string Written(size_t (*write)(time_t, char (&)[kTimeTextBytes]), time_t seconds) {
  char text[kTimeTextBytes];
  const size_t length = write(seconds, text);
  EXPECT_EQ(std::string(text), std::string(text, length));
  return std::string(text, length);
}

std::string DateTime(time_t seconds) { return Written(DateTimeText, seconds); }
std::string Clock(time_t seconds) { return Written(ClockText, seconds); }

// Each test may set TZ; the zone of the run comes back after it.
class TimeTextTest : public ::testing::Test {
  TimeZone restored_;
};

TEST_F(TimeTextTest, KnownTimesInUtc) {
  TimeZone::Set("UTC");
  EXPECT_EQ(DateTime(1704164645), "01/02/24 03:04:05");
  EXPECT_EQ(Clock(1704164645), "03:04:05");
  EXPECT_EQ(DateTime(0), "01/01/70 00:00:00");
  EXPECT_EQ(DateTime(-1), "12/31/69 23:59:59");
  EXPECT_EQ(DateTime(INT32_MIN), "12/13/01 20:45:52");
  EXPECT_EQ(DateTime(INT32_MAX), "01/19/38 03:14:07");
  EXPECT_EQ(DateTime(UINT32_MAX), "02/07/06 06:28:15");
}

// Every second of the 32-bit ranges the tables show is written as strftime
// writes it, in zones with and without daylight saving time.
TEST_F(TimeTextTest, SameTextsAsStrftimeInSeveralZones) {
  for (const char* zone :
       {"UTC", "EST5EDT,M3.2.0,M11.1.0", "<+1345>-13:45", "NZST-12NZDT,M9.5.0,M4.1.0/3"}) {
    TimeZone::Set(zone);
    for (int64_t seconds = INT32_MIN; seconds <= UINT32_MAX; seconds += 86399 * 7 + 3607) {
      const time_t time = static_cast<time_t>(seconds);
      ASSERT_EQ(DateTime(time), Strftime(time, "%x %X")) << zone << " " << seconds;
      ASSERT_EQ(Clock(time), Strftime(time, "%X")) << zone << " " << seconds;
    }
  }
}

TEST_F(TimeTextTest, TimeWithoutLocalTimeIsEmpty) {
  TimeZone::Set("UTC");
  const time_t far = static_cast<time_t>(INT64_MAX);
  EXPECT_EQ(std::make_tuple("", "", ""),
            std::make_tuple(DateTime(far), Clock(far), Strftime(far, "%X")));
}

}  // namespace
