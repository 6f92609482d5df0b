// Split-point check of every stream file on the disk (-a d).
#ifndef ANALYSIS_DISK_ANALYSIS_H_
#define ANALYSIS_DISK_ANALYSIS_H_

void AnalyzeDisk();

#endif  // ANALYSIS_DISK_ANALYSIS_H_
