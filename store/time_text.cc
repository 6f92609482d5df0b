#include "store/time_text.h"

#include "store/digits.h"
#include "store/local_time.h"

namespace {

char* Clock(char* out, const LocalTime& local) {
  out = TwoDigits(out, static_cast<unsigned>(local.hour));
  *out++ = ':';
  out = TwoDigits(out, static_cast<unsigned>(local.minute));
  *out++ = ':';
  return TwoDigits(out, static_cast<unsigned>(local.second));
}

}  // namespace

size_t DateTimeText(time_t seconds, char (&out)[kTimeTextBytes]) {
  LocalTime local;
  out[0] = '\0';
  if (!LocalTimeOf(seconds, local)) {
    return 0;
  }
  char* end = TwoDigits(out, static_cast<unsigned>(local.month + 1));
  *end++ = '/';
  end = TwoDigits(end, static_cast<unsigned>(local.day));
  *end++ = '/';
  // The year within its century, as %y gives it for years before 1900 too.
  end = TwoDigits(end, static_cast<unsigned>((local.year % 100 + 100) % 100));
  *end++ = ' ';
  end = Clock(end, local);
  *end = '\0';
  return static_cast<size_t>(end - out);
}

size_t ClockText(time_t seconds, char (&out)[kTimeTextBytes]) {
  LocalTime local;
  out[0] = '\0';
  if (!LocalTimeOf(seconds, local)) {
    return 0;
  }
  char* end = Clock(out, local);
  *end = '\0';
  return static_cast<size_t>(end - out);
}
