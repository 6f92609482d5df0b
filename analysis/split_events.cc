#include "analysis/split_events.h"

void AnalyzeSplitEvents(const AnalysisOptions&) {}
