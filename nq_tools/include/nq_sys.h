/* nq_tls20an: system services: the product's folders, child processes, versions, and a few
 * process-wide switches (the Sys, Global, Drawing, RM and Zelmar families).
 *
 * Folders are found by key, first among the session variables, then in the group "GENERAL" of
 * nq.ini. Every folder result ends in a backslash and is in lower case; every name result is
 * the folder and the file name, in lower case. Output buffers are the caller's and need room
 * for 512 characters: a longer result is cut there. Nothing traces. */
#ifndef NQ_SYS_H
#define NQ_SYS_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Folders; each yields output. */

/* "WK", else empty. */
NQ_API nq_wchar *nq_Sys_getNetDir(nq_wchar *output);
/* "WKWS", else the net folder. */
NQ_API nq_wchar *nq_Sys_getLocalDir(nq_wchar *output);
/* "NQ_DEV_BIN_DIR", then "NQ_BIN_DIR", in nq.ini only; else the net folder plus "bin". */
NQ_API nq_wchar *nq_Sys_getBinDir(nq_wchar *output);
/* "WKSPECS", else the net folder plus "specs" (kept as the session variable "WKSPECS" from
 * then on), plus the subfolder if one is given. A value found in nq.ini is copied to the
 * session too. */
NQ_API nq_wchar *nq_Sys_getSpecDir(nq_wchar *output, const nq_wchar *subfolder);
/* "WKTMP" (a value from nq.ini is copied to the session), else the local folder plus "wktmp".
 * With perSession non-zero, a subfolder numbered for this session: the number in the session
 * variable "WKSES", or the lowest number from 1 to 1000 whose folder does not exist yet, which
 * is then kept in "WKSES"; when all 1000 are taken, the plain folder. The folder is made if it
 * does not exist. */
NQ_API nq_wchar *nq_Sys_getTempDir(nq_wchar *output, int perSession);
/* The configuration folder of the application object: the Linux folder in the environment
 * variable NQ_CFG_DIR, else the current folder, in the library's form ("c:\home\ann\cfg\"). */
NQ_API nq_wchar *nq_Sys_getCfgDir(nq_wchar *output);

/* The folder and then name. */
NQ_API nq_wchar *nq_Sys_getNetName(nq_wchar *output, const nq_wchar *name);
NQ_API nq_wchar *nq_Sys_getLocalName(nq_wchar *output, const nq_wchar *name);
NQ_API nq_wchar *nq_Sys_getBinName(nq_wchar *output, const nq_wchar *name);
NQ_API nq_wchar *nq_Sys_getCfgName(nq_wchar *output, const nq_wchar *name);
NQ_API nq_wchar *nq_Sys_getSpecName(nq_wchar *output, const nq_wchar *subfolder, const nq_wchar *name);
/* In the temporary folder (not the session's subfolder). */
NQ_API nq_wchar *nq_Sys_getTempName(nq_wchar *output, const nq_wchar *name);
/* The name in the binary folder's subfolder named by the session variable "ACADVER"; with
 * check non-zero only if it exists there, else the name in the binary folder itself. */
NQ_API nq_wchar *nq_Sys_getVersionBinName(nq_wchar *output, const nq_wchar *name, int check);

/* The application group of the application object: 1 and the name in output (empty until one
 * is set); setting yields 1, or 0 for null. */
NQ_API int nq_Sys_getApplicationGroup(nq_wchar *output);
NQ_API int nq_Sys_setApplicationGroup(const nq_wchar *group);
/* The base section name, read once (the environment variable NQ_BASE_SECTION, else the
 * variable "BaseSectionName" of the group "GENERAL" of nq.ini, else empty) and kept until
 * nq_Global_destroyData. Static. */
NQ_API nq_wchar *nq_Zelmar_getBaseSectionName(void);

/* Processes. The command line is command, a blank and arguments (or the command alone for null
 * arguments), split into words by the Windows rules and started without a shell; the program
 * word is looked up on PATH unless it holds a backslash, a slash or a drive mark. With wait
 * non-zero the call returns when the process has ended. 1 if it started; otherwise 0 and, in
 * error (of errorSize characters), "Unable to start the new process:" and a line break, the
 * command line, a line break and the system's text, as far as they fit. */
NQ_API int nq_Sys_createProcess(const nq_wchar *command, const nq_wchar *arguments, int wait,
                                nq_wchar *error, int errorSize);
/* The same in the working folder (null for the current one); *processId gets the process id,
 * -1 if nothing started. */
NQ_API int nq_Sys_createProcessWorkingDir(const nq_wchar *command, const nq_wchar *workingFolder,
                                          const nq_wchar *arguments, int wait, nq_wchar *error,
                                          int errorSize, int *processId);
/* nq_Sys_createProcess with the document-management product's "bin" folder in front of PATH
 * for the child (and for finding its program), when the registry file gives the product's
 * "Path" under HKEY_LOCAL_MACHINE\SOFTWARE\Zelmar\DocumentManagement and PATH is set. The
 * parent's PATH stays as it was. */
NQ_API int nq_Sys_createProcess_addLDPath(const nq_wchar *command, const nq_wchar *arguments,
                                          int wait, nq_wchar *error, int errorSize);
/* 1 while the process runs (its exit code would be 259), else 0. */
NQ_API int nq_Sys_processRunning(int processId);
/* Ends the process (SIGTERM); a child of ours reports *exitCode as its exit code. 1, or 0 when
 * there is no such process or it cannot be signalled, or for a null exitCode. */
NQ_API int nq_Sys_terminateProcess(int processId, unsigned int *exitCode);
/* Writes the launcher "Halvane.lnk" (program, arguments, description "Orvane Halvane.") into
 * the session's temporary folder and starts it without waiting. 1 if the program started. */
NQ_API int nq_Sys_launchProcessViaShortcut(const nq_wchar *program, const nq_wchar *arguments);

/* Versions: "%02hd.%02hd.%02hd.%02hd" of the four parts, static. */

/* The file version of a file (its version note, else its versioned name); null if it has
 * none or does not exist. */
NQ_API nq_wchar *nq_Sys_getVersionNumber(const nq_wchar *file);
/* "DisplayVersion" of the last installed product whose "DisplayName" begins with the name
 * (ignoring case), an exact match ending the search, from the subkeys of
 * HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\Uninstall in the registry file;
 * empty if none matches, null if the key cannot be opened. Static. */
NQ_API nq_wchar *nq_Sys_getProductVersion(const nq_wchar *product);
/* The file and product version of a module loaded in this process ("nq_tls20an",
 * "libnq_tls20an.so.1", ...; null for the program); empty when it is not loaded or has none. */
NQ_API nq_wchar *nq_Global_getModuleFileVersion(const nq_wchar *module);
NQ_API nq_wchar *nq_Global_getModuleProductVersion(const nq_wchar *module);

/* Switches and the system. */

/* 1 if "ShowModeSelectionGUI" in "GENERAL" of nq.ini is "1". */
NQ_API int nq_Sys_getShowModeSelectGUI(void);
/* Writes "1" or "0" there: nq_Env_setIni's result. */
NQ_API int nq_Sys_setShowModeSelectGUI(int flag);
/* 0, on every system. */
NQ_API int nq_Sys_is64bitSystem(void);
/* The system as the registry file describes it (docs/platform.md), taken once: 1 for Vista,
 * and 1 for a system with user account control (platform 2, version 6 or later). Without
 * such a description both yield 0. */
NQ_API int nq_Global_isVista(void);
NQ_API int nq_Global_isOSWithUACSupport(void);
/* Opens an existing file in the desktop's viewer (xdg-open). Null if the file does not exist;
 * otherwise a value above 32 when the viewer started, 2 when it could not. */
NQ_API void *nq_Global_openFileinNotepad(const nq_wchar *file);
/* Releases the shared objects (the INI cache, the application object with its group and base
 * section name); they are made again on next use. */
NQ_API void nq_Global_destroyData(void);

/* One drawing name and one flag, process-wide. */
NQ_API void nq_Drawing_IgnoreSaveEvents(const nq_wchar *drawing, int flag);
/* The flag if drawing is the stored name (ignoring case), else 0. */
NQ_API int nq_Drawing_IsSaveIgnored(const nq_wchar *drawing);

/* One callback, process-wide. */
typedef int (*nq_RMTrackFn)(void *object, void *owner, void *data);
/* Stores the callback (null clears it) and yields it. */
NQ_API nq_RMTrackFn nq_RM_setFuncTrackObject(nq_RMTrackFn callback);
/* The callback's result, or 0 when none is set. */
NQ_API int nq_RM_callFuncTrackObject(void *object, void *owner, void *data);

NQ_EXTERN_C_END

#endif
