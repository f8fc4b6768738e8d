#pragma once
// Kind 4 "Backup Folder": parameter 0 is the source folder, parameter 1 the
// destination. Copies what changed since the last run (folder_backup.h),
// lists each copied file in the log and posts a notice with the outcome.

class Job;
class SessionContext;

void RunBackupJob(const Job& job, SessionContext& context);
