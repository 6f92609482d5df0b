// The help text of db, the tool's only documentation on the recorder.
#ifndef CLI_USAGE_H_
#define CLI_USAGE_H_

// Prints the usage text; `message`, when not null, stands above it.
void PrintUsage(const char* programName, const char* message);

#endif  // CLI_USAGE_H_
