#include "store/time_text.h"

#include "store/digits.h"

namespace {

char* Clock(char* out, const struct tm& local) {
  out = TwoDigits(out, static_cast<unsigned>(local.tm_hour));
  *out++ = ':';
  out = TwoDigits(out, static_cast<unsigned>(local.tm_min));
  *out++ = ':';
  return TwoDigits(out, static_cast<unsigned>(local.tm_sec));
}

}  // namespace

size_t DateTimeText(time_t seconds, char (&out)[kTimeTextBytes]) {
  struct tm local;
  out[0] = '\0';
  // The time zone is read once; the tool never changes TZ while it runs.
  if (localtime_r(&seconds, &local) == nullptr) {
    return 0;
  }
  char* end = TwoDigits(out, static_cast<unsigned>(local.tm_mon + 1));
  *end++ = '/';
  end = TwoDigits(end, static_cast<unsigned>(local.tm_mday));
  *end++ = '/';
  // The year within its century, as %y gives it for years before 1900 too.
  end = TwoDigits(end, static_cast<unsigned>((local.tm_year % 100 + 100) % 100));
  *end++ = ' ';
  end = Clock(end, local);
  *end = '\0';
  return static_cast<size_t>(end - out);
}

size_t ClockText(time_t seconds, char (&out)[kTimeTextBytes]) {
  struct tm local;
  out[0] = '\0';
  if (localtime_r(&seconds, &local) == nullptr) {
    return 0;
  }
  char* end = Clock(out, local);
  *end = '\0';
  return static_cast<size_t>(end - out);
}
