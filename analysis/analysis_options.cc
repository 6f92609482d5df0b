#include "analysis/analysis_options.h"

bool ProcessAnalysisOptions(std::string&, AnalysisOptions&) { return true; }
