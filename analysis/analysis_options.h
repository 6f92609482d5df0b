// The argument language of -a: which analysis to run.
#ifndef ANALYSIS_ANALYSIS_OPTIONS_H_
#define ANALYSIS_ANALYSIS_OPTIONS_H_

#include <cstdint>
#include <string>

struct AnalysisOptions {
  bool disk = false;
  bool split = false;
  uint32_t maxPartSize = 0;  // in units of 2^30 bytes; 0: no size check
};

// Applies `argument` to `options`, consuming it; false at an unknown character.
bool ProcessAnalysisOptions(std::string& argument, AnalysisOptions& options);

#endif  // ANALYSIS_ANALYSIS_OPTIONS_H_
