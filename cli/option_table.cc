#include "cli/option_table.h"

const char* const kShortOptions = "ha:d:eEf:r:R:spPtu";

const struct option kLongOptions[] = {
    {"help", no_argument, nullptr, 'h'},
    {"usage", no_argument, nullptr, 'h'},
    {"analyze", required_argument, nullptr, 'a'},
    {"delete", required_argument, nullptr, 'd'},
    {"deleteall", no_argument, nullptr, kDeleteAllOption},
    {"events", no_argument, nullptr, 'e'},
    {"files", required_argument, nullptr, 'f'},
    {"reid", required_argument, nullptr, 'r'},
    {"split", no_argument, nullptr, 'p'},
    {"status", no_argument, nullptr, 's'},
    {"tables", no_argument, nullptr, 't'},
    {"un", no_argument, nullptr, 'u'},
    {nullptr, 0, nullptr, 0},
};
