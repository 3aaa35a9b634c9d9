/* nq_tls20an: files, folders and drives.
 *
 * Result codes differ from operation to operation and follow the runtime call each one
 * wraps; every function below states its own. Static results are overwritten at the next
 * call. Names are library names ("C:\dir\file.txt", backslashes, any case); this system has
 * one drive, C (number 3). Text files are UTF-8; a byte that is not UTF-8 reads as the
 * character of the same value, so Latin-1 files read too. Nothing traces. */
#ifndef NQ_FILE_H
#define NQ_FILE_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* The document layer, asked first by every operation that removes or changes a file or
 * tests that one exists. Here it tests the disk: a folder is no file and a file no folder.
 * nq_File_revalidate does nothing. Existence tests yield 1 or 0. */
NQ_API void nq_File_revalidate(const nq_wchar *name);
NQ_API int nq_File_exists(const nq_wchar *name);
NQ_API int nq_Dir_exists(const nq_wchar *name);

/* Access, attributes, times. */

/* Mode 0 exists, 2 write, 4 read, 6 read and write: 1 or 0. Any other mode yields 0. */
NQ_API int nq_File_hasAccess(const nq_wchar *name, int mode);
NQ_API int nq_File_isWriteEnabled(const nq_wchar *name);
/* 1 on success, 0 on failure. */
NQ_API int nq_File_setReadOnlyAccess(const nq_wchar *name);
NQ_API int nq_File_setReadWriteAccess(const nq_wchar *name);
/* The last modification time in seconds since 1970: 0 on success, 1 on failure. */
NQ_API int nq_File_getTime(const nq_wchar *name, int32_t *time);
/* Access and modification time: 0 on success, -1 on failure. */
NQ_API int nq_File_setTime(const nq_wchar *name, int64_t time);
/* -1, 0, 1 as a is older than, as old as, newer than b; -1 if a's time cannot be read,
 * 1 if b's cannot. */
NQ_API int nq_File_cmpTime(const nq_wchar *a, const nq_wchar *b);
/* Length of the stream's file in bytes, -1 on failure. */
NQ_API long nq_File_length(FILE *stream);

/* Creating, copying, moving, deleting. */

/* 1 if the file exists or could be made (empty); 0 otherwise. */
NQ_API int nq_File_create(const nq_wchar *name);
/* 0 on success; 1 when a file cannot be opened, and 1 (nothing done) when both names are
 * the same file. The copy gets the source's modification time. */
NQ_API int nq_File_copy(const nq_wchar *source, const nq_wchar *dest);
/* The rest of source written to dest, below the streams' buffers (dest is flushed first).
 * Each read after the first asks for what the previous one delivered. Yields 0. */
NQ_API int nq_File_copyRest(FILE *dest, FILE *source);
/* source appended to dest: 0, or 1 when either cannot be opened. */
NQ_API int nq_File_append(const nq_wchar *dest, const nq_wchar *source);
/* dest is removed first, whether or not the rename then works: 0 on success, -1 on
 * failure. */
NQ_API int nq_File_move(const nq_wchar *source, const nq_wchar *dest);
/* 1 if removed, 0 otherwise. */
NQ_API int nq_File_deleteSingle(const nq_wchar *name);
/* The number of files removed: those matching the pattern name, or with isList those named
 * line by line in the text file name. */
NQ_API int nq_File_delete(const nq_wchar *name, int isList);

/* Searching, one search at a time in the process. Patterns use "*" and "?" in the last
 * component, ignore case, and "*.*" matches names without a dot too; "." and ".." come first
 * in a folder other than the root. name receives the entry's name alone (up to 259
 * characters and a terminator). 0 and a name; -1 when nothing (more) matches, and then the
 * search is closed. */
NQ_API int nq_File_findFirst(const nq_wchar *pattern, nq_wchar *name);
NQ_API int nq_File_findNext(nq_wchar *name);
/* A new list of folder part plus name, lower case; null if nothing matches. */
NQ_API StrList *nq_Dir_list(const nq_wchar *pattern);

/* Reading text. */

/* At most limit characters up to a line feed (not stored), then a terminator, so the buffer
 * holds limit + 1. The rest of a longer line is dropped. A carriage return before the line
 * feed is dropped too. 0 if the stream was at its end on entry; else 1 unless the stream
 * ended with nothing read. */
NQ_API int nq_File_readLine(FILE *stream, nq_wchar *buffer, int limit);
/* The file's lines (pieces of at most 511 characters) without line feeds and without empty
 * lines; null if the file cannot be opened or gives no line. A last line without a line
 * feed is not read. */
NQ_API StrList *nq_File_readFile(const nq_wchar *name);
/* The same, but each entry keeps its line feed and empty lines are "\n". */
NQ_API StrList *nq_File_readFileExactly(const nq_wchar *name);

/* Pieces. */

/* Cuts the file into pieces of at most size bytes named by number in place of the
 * extension (data.dbf gives data.1, data.2, ...). The number of the last piece; 0 if
 * nothing could be done. An exact multiple of size leaves an empty last piece. */
NQ_API int nq_File_slice(const nq_wchar *name, long size);
/* Joins name's pieces 1, 2, ... into name and removes them; the first number that does not
 * open (the count of pieces + 1), or 0 if name cannot be written. */
NQ_API int nq_File_mend(const nq_wchar *name);

/* One byte transformation, its own inverse: output byte i is input byte i exclusive-or key
 * entry i modulo 512. Output first; 1 if both files opened, else 0 (a missing input leaves
 * an empty output). */
NQ_API int nq_File_encrypt(const nq_wchar *output, const nq_wchar *input);
NQ_API int nq_File_decrypt(const nq_wchar *output, const nq_wchar *input);

/* Names with the file system's help; static results. */

/* target relative to the folder base, both absolute with a drive; null when either is not
 * 4 to 512 characters long or the result would be longer than 512. */
NQ_API nq_wchar *nq_File_getRelativeFilename(const nq_wchar *base, const nq_wchar *target);
/* The network form of a name; there are no network drives here, so the name as it came. */
NQ_API nq_wchar *nq_File_getUNCPathName(const nq_wchar *name);

/* Folders and drives. */

/* The current folder ("C:\..."), static; null if it does not fit 512 characters. */
NQ_API nq_wchar *nq_Dir_current(void);
/* 0 on success, -1 on failure. */
NQ_API int nq_Dir_change(const nq_wchar *path);
/* Makes every missing folder of the path: the result of the last one made, or -1 when none
 * was needed (so an existing folder yields -1). */
NQ_API int nq_Dir_create(const nq_wchar *path);
/* 0 on success, -1 on failure. */
NQ_API int nq_Dir_delete(const nq_wchar *path);
/* Removes the folder and what it holds: the result of removing the folder itself. */
NQ_API int nq_Dir_deleteTree(const nq_wchar *path);
/* The parent of the absolute name, with its trailing backslash; static; null for a root. */
NQ_API nq_wchar *nq_Dir_getParent(const nq_wchar *name);
/* Drive numbers count from A = 1; C (3) is the only drive. */
NQ_API int nq_Drive_get(void);
NQ_API int nq_Drive_num(nq_wchar letter);
/* -1 below 1; otherwise 0, and nothing changes. */
NQ_API int nq_Drive_set(int number);

/* Deletes the files of a folder tree, and the subfolders at least minimumAge old (times in
 * 100-ns units since 1601; currentTime 0 means now); with removeFolder the folder itself
 * too. Names that begin with a dot are left. 1 for full success, 0 otherwise; a missing
 * folder is full success. */
NQ_API int nq_File_DeleteFolder(const nq_wchar *path, int removeFolder, int64_t minimumAge,
                                int64_t currentTime);

NQ_EXTERN_C_END

#endif
