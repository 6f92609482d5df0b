#include "analysis/disk_analysis.h"

void AnalyzeDisk() {}
