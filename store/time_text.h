// Local time texts of the tables. In the POSIX locale, which the tool never
// changes, strftime writes "%x %X" as "%m/%d/%y %H:%M:%S" and "%X" as
// "%H:%M:%S"; these functions write the same digits themselves. Listings
// format two or three times per row, and strftime and localtime (which looks
// TZ up again on every call) cost more than all the rest of a row.
#ifndef STORE_TIME_TEXT_H_
#define STORE_TIME_TEXT_H_

#include <cstddef>
#include <ctime>

// Room for either text and its terminating NUL, as strftime was given.
constexpr size_t kTimeTextBytes = 20;

// Writes the local date and time of `seconds` ("%x %X") into `out` and
// returns its length; an empty text (length 0) when it has no local time.
size_t DateTimeText(time_t seconds, char (&out)[kTimeTextBytes]);

// Likewise the local time of day ("%X").
size_t ClockText(time_t seconds, char (&out)[kTimeTextBytes]);

#endif  // STORE_TIME_TEXT_H_
