// Verification of every split event group (-a s).
#ifndef ANALYSIS_SPLIT_EVENTS_H_
#define ANALYSIS_SPLIT_EVENTS_H_

#include "analysis/analysis_options.h"

void AnalyzeSplitEvents(const AnalysisOptions& options);

#endif  // ANALYSIS_SPLIT_EVENTS_H_
