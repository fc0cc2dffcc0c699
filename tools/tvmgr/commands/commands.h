#pragma once

#include <string>
#include <vector>

#include "options/options.h"

namespace tvmgr {

// The commands. Each prints its result on stdout, everything else on stderr, and gives the exit code; a
// CCommandError ends it early.

int RunPorts(const tagGlobalOptions& global);
int RunGet(const tagGlobalOptions& global, const tagGetOptions& options);
int RunSet(const tagGlobalOptions& global, const tagSetOptions& options);
int RunPrefix(const tagGlobalOptions& global, const tagPrefixOptions& options);
int RunStatus(const tagGlobalOptions& global, const tagStatusOptions& options);
int RunOperation(const tagGlobalOptions& global, const tagOperationOptions& options);
int RunSend(const tagGlobalOptions& global, const tagSendOptions& options);
int RunFiles(const tagGlobalOptions& global, const tagFilesOptions& options);
int RunFetch(const tagGlobalOptions& global, const tagFetchOptions& options);
int RunPut(const tagGlobalOptions& global, const tagPutOptions& options);
int RunRemove(const tagGlobalOptions& global, const tagRemoveOptions& options);
int RunBackup(const tagGlobalOptions& global, const tagBackupOptions& options);
int RunBackupCheck(const tagGlobalOptions& global, const tagBackupCheckOptions& options);
int RunBackupDiff(const tagGlobalOptions& global, const tagBackupDiffOptions& options);
int RunBackupCoverage(const tagGlobalOptions& global);
int RunRestore(const tagGlobalOptions& global, const tagRestoreOptions& options);
int RunExport(const tagGlobalOptions& global, const tagExportOptions& options);
int RunApply(const tagGlobalOptions& global, const tagApplyOptions& options);
int RunDiff(const tagGlobalOptions& global, const tagDiffOptions& options);
int RunSearch(const tagGlobalOptions& global, const tagSearchOptions& options);
int RunUse(const tagGlobalOptions& global, const tagUseOptions& options);
int RunInfo(const tagGlobalOptions& global);
int RunDoctor(const tagGlobalOptions& global, const tagDoctorOptions& options);
int RunCodes(const tagGlobalOptions& global, const tagCodesOptions& options);

/** The names that "op" takes. */
std::vector<std::string> OperationNames();

}  // namespace tvmgr
