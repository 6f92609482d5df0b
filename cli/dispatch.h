// The option loop: every option is handled to completion, in command-line order.
#ifndef CLI_DISPATCH_H_
#define CLI_DISPATCH_H_

// Runs the option loop and returns the exit status, which starts as
// `exitStatus` and becomes 0 whenever the usage text is printed.
int RunOptionLoop(int argc, char** argv, int exitStatus);

#endif  // CLI_DISPATCH_H_
