// The command line of db: short options and the long option table.
#ifndef CLI_OPTION_TABLE_H_
#define CLI_OPTION_TABLE_H_

#include <getopt.h>

extern const char* const kShortOptions;
// --deleteall has no short form; getopt_long returns this value for it.
constexpr int kDeleteAllOption = 0xFF00;
// Terminated by an all-zero entry, as getopt_long expects.
extern const struct option kLongOptions[];

#endif  // CLI_OPTION_TABLE_H_
