// Sets TZ for the code under test, as long as the object lives; the time
// zone of the test run (the harness sets TZ=UTC) comes back afterwards.
#ifndef TESTING_TIME_ZONE_H_
#define TESTING_TIME_ZONE_H_

#include <cstdlib>
#include <ctime>
#include <string>

class TimeZone {
 public:
  TimeZone() {
    const char* zone = std::getenv("TZ");
    hadZone_ = zone != nullptr;
    saved_ = hadZone_ ? zone : "";
  }
  ~TimeZone() {
    if (hadZone_) {
      setenv("TZ", saved_.c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

  // Sets TZ to `zone`, or unsets it for a null zone, and has the C library
  // read it.
  static void Set(const char* zone) {
    if (zone == nullptr) {
      unsetenv("TZ");
    } else {
      setenv("TZ", zone, 1);
    }
    tzset();
  }

 private:
  std::string saved_;
  bool hadZone_ = false;
};

#endif  // TESTING_TIME_ZONE_H_
