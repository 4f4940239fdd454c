/* The Orvane utility library: lists, string-keyed arrays, parameter files, the error log,
 * files and paths, text, and times.
 *
 * Conventions
 *   - All text is UTF-8 and ends with a zero byte.
 *   - A function that returns `char *` hands the memory over: release it with free().
 *     Exceptions are said where they occur (strtrim).
 *   - A failure is a negative code or a null pointer, and a line in the error log that says what,
 *     where and why. A call that succeeds leaves nothing in the error log.
 *   - Times are epoch seconds: seconds since 1970-01-01T00:00:00 UTC without leap seconds.
 *     ORVANE_NULL_TIME is "no time".
 *   - The library may be used from several threads. Lists, arrays and parameter files are not
 *     locked: one thread at a time for each of them.
 */
#ifndef ORVANE_UTIL_H
#define ORVANE_UTIL_H

#include <stdint.h>

#include <orvane/util_export.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The time that means "no time", in seconds. */
#define ORVANE_NULL_TIME (-9999999999.999)

/* ---- Lists -------------------------------------------------------------------------------- */

/* A growing list of pointers. The list never owns what its elements point to. */
typedef struct Tbl Tbl;

/* A new, empty list with room for `capacity` elements (0: a default). Release with freetbl. */
ORVANE_UTIL_EXPORT Tbl *newtbl(int64_t capacity);

/* Appends an element and returns its index, or -1 when `list` is null. */
ORVANE_UTIL_EXPORT int64_t pushtbl(Tbl *list, void *element);

/* The element at `index`, or null outside the list. */
ORVANE_UTIL_EXPORT void *gettbl(const Tbl *list, int64_t index);

/* The number of elements; 0 for a null list. */
ORVANE_UTIL_EXPORT int64_t maxtbl(const Tbl *list);

/* Releases the list, first calling `release` (may be null) on every element. */
ORVANE_UTIL_EXPORT void freetbl(Tbl *list, void (*release)(void *));

/* ---- String-keyed arrays ------------------------------------------------------------------- */

/* A map from text to pointer, in byte order of the keys. The keys are copied, the values are not. */
typedef struct Arr Arr;

ORVANE_UTIL_EXPORT Arr *newarr(void);

/* Stores a value; returns the value that it replaces, or null. */
ORVANE_UTIL_EXPORT void *setarr(Arr *array, const char *key, void *value);

/* The value under `key`, or null. */
ORVANE_UTIL_EXPORT void *getarr(const Arr *array, const char *key);

/* The keys in byte order. The list is the caller's (freetbl(list, NULL)); the texts (const char *)
 * belong to the array and live until it changes or is freed. */
ORVANE_UTIL_EXPORT Tbl *keysarr(const Arr *array);

/* Releases the array, first calling `release` (may be null) on every value. */
ORVANE_UTIL_EXPORT void freearr(Arr *array, void (*release)(void *));

/* ---- Parameter files ----------------------------------------------------------------------- */

/* A parameter file, or a list or an array inside one. Parameter files are YAML, of which block and
 * flow mappings, sequences and scalars are taken; every scalar is the text it looks like. Anchors,
 * aliases and tags are refused. Of a parameter file only the root, as answered by pfread or
 * pfparse, is the caller's; nodes inside it live as long as it does. */
typedef struct Pf Pf;

enum PfKind { PFSTRING = 1, PFLIST = 2, PFARRAY = 3 };

/* A value inside a parameter file: `text` for a string, `pf` for a list or an array. */
typedef struct PfValue {
    const char *text;
    Pf *pf;
} PfValue;

/* Reads a file. 0 and the root in *pf (release with pffree), or a negative code with *pf null and
 * the error log naming file, line, column and what was expected. An empty file is an empty array;
 * a file whose root is not a mapping is refused. */
ORVANE_UTIL_EXPORT int pfread(const char *path, Pf **pf);

/* Parses a text of `length` bytes; `name` stands for the file in messages. Otherwise as pfread. */
ORVANE_UTIL_EXPORT int pfparse(const char *text, uint64_t length, const char *name, Pf **pf);

/* Releases a root; a node inside a parameter file, or null, is left alone. */
ORVANE_UTIL_EXPORT void pffree(Pf *pf);

/* The keys of an array, in file order (const char *, owned by the parameter file), in a list of
 * the caller (freetbl(list, NULL)); null when `pf` is not an array. */
ORVANE_UTIL_EXPORT Tbl *pfkeys(const Pf *pf);

/* The kind (PfKind) of the value under `key` and, unless `value` is null, the value; negative
 * without an entry in the error log when there is none. Of a list, `key` is the index in decimal. */
ORVANE_UTIL_EXPORT int pfget(const Pf *pf, const char *key, PfValue *value);

/* The number of elements of a list or an array; 0 for anything else. */
ORVANE_UTIL_EXPORT int64_t pfmaxtbl(const Pf *pf);

/* Where the value under `key` starts (`key` null: where `pf` itself starts): line and column, both
 * counted from 1; either pointer may be null. Returns 0, or negative when there is none. */
ORVANE_UTIL_EXPORT int pfwhere(const Pf *pf, const char *key, int64_t *line, int64_t *column);

/* Where the key itself stands, as pfwhere does for its value. */
ORVANE_UTIL_EXPORT int pfwherekey(const Pf *pf, const char *key, int64_t *line, int64_t *column);

/* The name of the file that `pf` came from; owned by the parameter file. */
ORVANE_UTIL_EXPORT const char *pfname(const Pf *pf);

/* ---- Error log ----------------------------------------------------------------------------- */

/* Appends one line, formatted as printf does; it may hold line feeds, those at its end are cut off. The log
 * is bounded (500 lines, 64 KiB, 16 KiB a line): when it is full, its oldest lines go and the log says how
 * many; equal lines in a row are kept once, followed by " (repeated N times)". Any thread may call. */
ORVANE_UTIL_EXPORT void elog_log(const char *format, ...) __attribute__((format(printf, 1, 2)));

/* The lines from the `first`-th on (0: all), joined by line feeds, without one at the end; "" when there are
 * none. Lines are numbered from the last elog_clear on, dropped and repeated ones counted, so that
 * n = elog_count(); ...; elog_string(n) gives what was logged in between. */
ORVANE_UTIL_EXPORT char *elog_string(int64_t first);

/* The number of lines logged since the log was last emptied. */
ORVANE_UTIL_EXPORT int64_t elog_count(void);

/* Empties the log. */
ORVANE_UTIL_EXPORT void elog_clear(void);

/* Tells something that is not an error: calls the notice hook, or writes a line to standard error
 * when there is none. */
ORVANE_UTIL_EXPORT void elog_notice(const char *format, ...) __attribute__((format(printf, 1, 2)));

/* Sets the notice hook of the process (null: back to standard error). */
typedef void (*ElogNoticeHook)(const char *text, void *context);
ORVANE_UTIL_EXPORT void elog_set_notice_hook(ElogNoticeHook hook, void *context);

/* ---- Files and paths ----------------------------------------------------------------------- */

/* The absolute form of a path, without "." and ".." parts and doubled slashes; symbolic links are not
 * followed. */
ORVANE_UTIL_EXPORT char *abspath(const char *path);

/* The modification time of a file, or ORVANE_NULL_TIME when there is none. */
ORVANE_UTIL_EXPORT double dfiletime(const char *path);

/* 1 when the path names something that exists, else 0. */
ORVANE_UTIL_EXPORT int is_present(const char *path);

/* ---- Text ---------------------------------------------------------------------------------- */

/* Removes white space at both ends in place, moving the text to the front, and returns its
 * argument (null for null): `free(strtrim(strtdelta(s)))` is right. */
ORVANE_UTIL_EXPORT char *strtrim(char *text);

/* 1 when the text is empty, null or only white space. */
ORVANE_UTIL_EXPORT int whitespace(const char *text);

/* A pseudo-random fraction from 0 up to, not including, 1. */
ORVANE_UTIL_EXPORT double disordered(void);

/* ---- Times --------------------------------------------------------------------------------- */

/* A time as text, in UTC: %Y %m %d %H %M %S %j %y %b %B %a %A %D (mm/dd/yyyy) %T (%H:%M:%S)
 * %Z (abbreviation of the zone) %z (offset, +hhmm; +hhmmss for local mean times) %u (microseconds, six
 * digits) %s (milliseconds, three) %E (epoch seconds, five decimals) %%. Names are English. The time is rounded
 * once, to the finest unit that the format shows; a format without seconds is not rounded up to minutes or
 * days. Any other sequence is copied as it stands. A time that is not a number, or whose year is beyond -9999
 * to 9999, gives its bare seconds whatever the format. Null, with a line in the error log, for a null format. */
ORVANE_UTIL_EXPORT char *epoch2str(double epoch, const char *format);

/* The same in a named zone of the system's zone data; null or empty: UTC. An unknown zone gives UTC and, once
 * for each name and notice hook, a notice. */
ORVANE_UTIL_EXPORT char *zepoch2str(double epoch, const char *format, const char *zone);

/* 1 and the time in *epoch (may be null) when the text is a time: epoch seconds; ISO 8601 in its
 * extended or basic form, date alone or with a time, with or without a zone; yyyy/mm/dd; yyyyddd and
 * yyyyddd:hh:mm:ss; mm/dd/yyyy hh:mm:ss; and what epoch2str and zepoch2str print with
 * "%D (%j) %H:%M:%S.%u %Z". White space around it is allowed. Without a zone a time is UTC. Otherwise 0, with
 * *epoch as it was; the error log stays as it is.
 *   - Digits alone are a day when there are seven (yyyyddd) or eight (yyyymmdd) of them, the year is 1800 to
 *     2199 and the rest can be a day; else they are epoch seconds.
 *   - Dates and times that don't exist are refused. 24:00:00 is the next midnight; second 60 is taken at the
 *     end of a day of UTC alone and is the next second.
 *   - A zone's abbreviation means what it does in the zone that zepoch2str showed it for last, of the last
 *     eight zones; else what it does in its usual zone (EST: America/New_York, IST: Asia/Kolkata, ...);
 *     else what all zones agree on that have it. Abbreviations that mean several things are refused. */
ORVANE_UTIL_EXPORT int is_epoch_string(const char *text, double *epoch);

/* The same for a text that was written in a named zone (null or empty: as is_epoch_string): a date or time
 * without a zone is that zone's local time (the earlier one where clocks show it twice; refused where they skip
 * it), and an abbreviation is looked up in that zone first, so that what zepoch2str printed there comes back as
 * the same time even in the hour that autumn repeats. An unknown zone is UTC, with a notice. */
ORVANE_UTIL_EXPORT int zis_epoch_string(const char *text, const char *zone, double *epoch);

/* A duration in seconds as a person says it: "3 minutes", "2.5 hours", "12 days"; with one decimal below ten,
 * none above. Years from 730 days on. A negative one has a minus sign. */
ORVANE_UTIL_EXPORT char *strtdelta(double seconds);

/* A time in the zone of the machine (the TZ environment variable, else the system's), to the second:
 * "02/07/2018 (038) 14:23:11 PST". */
ORVANE_UTIL_EXPORT char *strlocaltime(double epoch);

/* The present time. */
ORVANE_UTIL_EXPORT double std_now(void);

#ifdef __cplusplus
}
#endif

#endif /* ORVANE_UTIL_H */
